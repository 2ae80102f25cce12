#include <libcrossplatform/common/ModelIds.h>

#include <gtest/gtest.h>

#include <map>

using namespace Veltra;

TEST(ModelId, NamesBothWays) {
  const std::map<unsigned, std::string> names = {{3000, "Orbel"}, {3001, "Quill"}, {3002, "Orbel2"}, {3003, "Quill2"}};
  std::vector<std::string> inOrder;
  for (const auto& [id, name] : names) inOrder.push_back(name);
  EXPECT_EQ(modelNameList, inOrder);
  for (unsigned id = 2990; id < 3010; ++id) {
    SCOPED_TRACE(id);
    const auto model = static_cast<ModelId>(id);
    const auto row = names.find(id);
    EXPECT_EQ(toString(model), row != names.end() ? row->second : std::string());
    EXPECT_EQ(isQuill(model), id == 3001 || id == 3003);
    EXPECT_EQ(isModelV2(model), id == 3002 || id == 3003);
    if (row == names.end()) continue;
    ModelId read{};
    EXPECT_TRUE(modelIdStrToEnum(row->second.c_str(), read));
    EXPECT_EQ(read, model);
    EXPECT_EQ(isQuill(row->second), isQuill(model));
    EXPECT_EQ(isModelV2(row->second), isModelV2(model));
  }
  for (const char* unknown : {"orbel", "Orbel3", "Quil", "Quill ", ""}) {
    ModelId untouched = MODEL_ID_QUILL2;
    EXPECT_FALSE(modelIdStrToEnum(unknown, untouched)) << unknown;
    EXPECT_EQ(untouched, MODEL_ID_QUILL2);
    EXPECT_FALSE(isQuill(std::string(unknown)) || isModelV2(std::string(unknown))) << unknown;
  }
  ModelId untouched = MODEL_ID_QUILL2;
  EXPECT_FALSE(modelIdStrToEnum(nullptr, untouched));
}
