#include <libcrossplatform/common/ModelIds.h>

#include <gtest/gtest.h>

using namespace Veltra;

TEST(ModelId, NamesBothWays) {
  std::vector<std::string> names;
  for (unsigned id = 2990; id < 3010; ++id) {
    SCOPED_TRACE(id);
    const auto model = static_cast<ModelId>(id);
    const std::string name = toString(model);
    if (!name.empty()) names.push_back(name);
    ModelId read{};
    EXPECT_EQ(modelIdStrToEnum(name.c_str(), read), !name.empty());
    EXPECT_EQ(read, name.empty() ? ModelId{} : model);
    EXPECT_TRUE(isQuill(model) == (id == 3001 || id == 3003) && isQuill(name) == isQuill(model));
    EXPECT_TRUE(isModelV2(model) == (id == 3002 || id == 3003) && isModelV2(name) == isModelV2(model));
  }
  EXPECT_EQ(modelNameList, names);
  ModelId untouched = MODEL_ID_QUILL2;
  for (const char* unknown : {"orbel", "Orbel3", "Quil", "Quill ", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(modelIdStrToEnum(unknown, untouched));
    EXPECT_EQ(untouched, MODEL_ID_QUILL2);
  }
}
