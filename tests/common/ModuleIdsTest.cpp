#include <libcrossplatform/common/ModuleIds.h>

#include <limits>
#include <set>

#include <gtest/gtest.h>

using namespace Veltra;

namespace {

/// The modules, and above 10000 those that can be updated.
bool isListed(int id) {
  static const std::set<int> ids = {100, 101, 102, 103, 104, 105, 106, 200, 201, 202, 300, 302, 400, 500, 501};
  return ids.count(id) != 0 || (id < 10500 && ids.count(id - 10000) != 0);
}

}  // namespace

TEST(ModuleId, ValidityAndFiltersOverTheWholeRange) {
  for (int id = -100; id <= 21000; ++id) {
    SCOPED_TRACE(id);
    const auto module = static_cast<ModuleId>(id);
    const bool valid = isListed(id), copper = id == 300 || id == 302 || id == 400;
    ASSERT_EQ(*toString(module) != '\0', valid);
    ASSERT_EQ(isValidModule(module), valid);
    ASSERT_EQ(isCopperModule(module), copper);
    ASSERT_EQ(moduleIdSansDfu(module), id > 9999 ? id - 10000 : id);
    const std::string filters = id < 200     ? "01"
                                : id < 300   ? "02"
                                : copper     ? "03"
                                : id < 10000 ? "05"
                                : id < 10300 ? "46"
                                             : "6";
    for (char filter = '/'; filter <= '7'; ++filter) {
      ASSERT_EQ(isValidModulePerCategory(module, static_cast<ModuleCategory>(filter - '0')),
                valid && filters.find(filter) != std::string::npos)
          << "by " << filter;
    }
  }
}

TEST(ModuleId, CategoryGoesByRangeAndIsNeverFiberDfu) {
  struct Row {
    int first, last, plain, dfuValid;
  };
  constexpr int LOWEST = std::numeric_limits<int>::min(), HIGHEST = std::numeric_limits<int>::max();
  const Row rows[] = {{LOWEST, LOWEST, 6, 6}, {-100, -1, 6, 6},     {0, 0, 0, 0},         {1, 99, 6, 6},
                      {100, 199, 1, 1},       {200, 299, 2, 2},     {300, 300, 3, 3},     {301, 301, 6, 6},
                      {302, 302, 3, 3},       {303, 399, 6, 6},     {400, 400, 3, 3},     {401, 499, 6, 6},
                      {500, 9999, 5, 5},      {10000, 10000, 6, 0}, {10001, 10099, 6, 6}, {10100, 10199, 6, 1},
                      {10200, 10299, 6, 2},   {10300, 10300, 6, 3}, {10301, 10301, 6, 6}, {10302, 10302, 6, 3},
                      {10400, 10400, 6, 3},   {10500, 19999, 6, 5}, {20000, 20400, 6, 6}, {HIGHEST, HIGHEST, 6, 6}};
  for (const Row& row : rows) {
    for (int64_t id = row.first; id <= row.last; ++id) {
      ASSERT_EQ(getModuleCategory(static_cast<ModuleId>(id), DFU_MODULE_IS_OTHER), row.plain) << id;
      ASSERT_EQ(getModuleCategory(static_cast<ModuleId>(id), DFU_MODULE_IS_VALID), row.dfuValid) << id;
    }
  }
  const auto updated = static_cast<ModuleId>(10105);
  EXPECT_TRUE(getModuleCategory(updated, true) == 1 && getModuleCategory(updated, false) == 6);
}
