#include <libcrossplatform/common/ModelIds.h>

#include <gtest/gtest.h>

using namespace Veltra;

TEST(ModelId, NamesBothWays) {
  const std::vector<std::string> names = {"Orbel", "Quill", "Orbel2", "Quill2"};
  EXPECT_EQ(modelNameList, names);
  for (unsigned id = 2990; id < 3010; ++id) {
    SCOPED_TRACE(id);
    const auto model = static_cast<ModelId>(id);
    const std::string name = id >= 3000 && id <= 3003 ? names[id - 3000] : "";
    EXPECT_EQ(toString(model), name);
    ModelId read{};
    EXPECT_EQ(modelIdStrToEnum(name.c_str(), read), !name.empty());
    EXPECT_EQ(read, name.empty() ? ModelId{} : model);
    EXPECT_TRUE(isQuill(model) == (id == 3001 || id == 3003) && isQuill(name) == isQuill(model));
    EXPECT_TRUE(isModelV2(model) == (id == 3002 || id == 3003) && isModelV2(name) == isModelV2(model));
  }
  ModelId untouched = MODEL_ID_QUILL2;
  for (const char* unknown : {"orbel", "Orbel3", "Quil", "Quill ", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(modelIdStrToEnum(unknown, untouched));
    EXPECT_EQ(untouched, MODEL_ID_QUILL2);
  }
}
