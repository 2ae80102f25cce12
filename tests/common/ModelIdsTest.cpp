#include <libcrossplatform/common/ModelIds.h>

#include <gtest/gtest.h>

using namespace Veltra;

TEST(ModelId, FamiliesAndGenerations) {
  EXPECT_EQ(modelNameList, (std::vector<std::string>{"Orbel", "Quill", "Orbel2", "Quill2"}));
  for (unsigned id = 2990; id < 3010; ++id) {
    const auto model = static_cast<ModelId>(id);
    EXPECT_TRUE(isQuill(model) == (id == 3001 || id == 3003) && isQuill(toString(model)) == isQuill(model)) << id;
    EXPECT_TRUE(isModelV2(model) == (id == 3002 || id == 3003) && isModelV2(toString(model)) == isModelV2(model)) << id;
  }
  ModelId untouched{};
  for (unsigned i = 0; i < 4; ++i) {
    EXPECT_TRUE(modelIdStrToEnum(modelNameList[i].c_str(), untouched) && untouched == 3000 + i) << i;
  }
  EXPECT_FALSE(modelIdStrToEnum("orbel", untouched) || modelIdStrToEnum(nullptr, untouched));
  EXPECT_EQ(untouched, MODEL_ID_QUILL2);
}
