#include <libcrossplatform/common/ModuleIds.h>

#include <limits>

#include "RecordTesting.h"

using namespace Veltra;

TEST(ModuleId, ValidityCategoryAndFiltersOfAllIds) {
  const auto answersOf = [](int id) {
    const auto module = static_cast<ModuleId>(id);
    std::string filters = "filters ";
    for (int filter = -1; filter <= 8; ++filter) {
      if (isValidModulePerCategory(module, static_cast<ModuleCategory>(filter))) filters += std::to_string(filter);
    }
    const int plain = getModuleCategory(module, DFU_MODULE_IS_OTHER),
              dfu = getModuleCategory(module, DFU_MODULE_IS_VALID);
    EXPECT_TRUE(getModuleCategory(module, false) == plain && getModuleCategory(module, true) == dfu) << id;
    EXPECT_EQ(isValidModule(module), *toString(module) != '\0') << id;
    EXPECT_EQ(moduleIdSansDfu(module), id > 9999 ? id - 10000 : id);
    return " " + filters + (isValidModule(module) ? " valid" : "") + (isCopperModule(module) ? " copper" : "") +
           " category " + std::to_string(plain) + ", with updates " + std::to_string(dfu) + "\n";
  };
  std::string table, last;
  const auto add = [&](int id) {
    const std::string answers = answersOf(id);
    if (answers != last) table += "from " + std::to_string(id) + answers;
    last = answers;
  };
  add(std::numeric_limits<int>::min());
  for (int id = -100; id <= 21000; ++id) add(id);
  add(std::numeric_limits<int>::max());
  RecordTesting::expectGoldenText(table, "module_ids");
}
