#include <libcrossplatform/common/ModuleIds.h>

#include <limits>
#include <map>

#include "RecordTesting.h"

using namespace Veltra;

namespace {

/// The modules, and what they call themselves while they are updated: 10000 above.
std::map<int, std::string> moduleNames() {
  std::map<int, std::string> names;
  for (const char* row :
       {"100|KTR-QUAD|DFU: OTDR mid quad", "101|KTR-MM|DFU: OTDR mid mm", "102|KTR-SM|DFU: OTDR mid sm",
        "103|KTR-HDR|DFU: HDR OTDR sm", "104|KTR-HDR+1490|DFU: HDR OTDR sm+1490",
        "105|KTR-HDR+1625|DFU: HDR OTDR sm+1625", "106|KTR-HDR-QUAD|DFU: HDR OTDR quad",
        "200|LTM-QUAD|DFU: OLTS mid quad", "201|LTM-MM|DFU: OLTS mid mm", "202|LTM-SM|DFU: OLTS mid sm",
        "300|QRT-A50|Boot: Copper Class FA", "302|QRT-A06|Boot: Copper Cat 6A", "400|QRT-A80|Boot: Copper Cat 8",
        "500|PRB-10", "501|PRB-30"}) {
    const std::vector<std::string> parts = RecordTesting::split(row);
    for (std::size_t i = 1; i < parts.size(); ++i) names[std::stoi(parts[0]) + (i == 1 ? 0 : 10000)] = parts[i];
  }
  return names;
}

}  // namespace

TEST(ModuleId, NamesAndFiltersOverTheWholeRange) {
  const std::map<int, std::string> names = moduleNames();
  for (int id = -100; id <= 21000; ++id) {
    SCOPED_TRACE(id);
    const auto module = static_cast<ModuleId>(id);
    const bool valid = names.count(id) != 0, copper = id == 300 || id == 302 || id == 400;
    ASSERT_EQ(toString(module), valid ? names.at(id) : std::string());
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
  const char* const names[] = {"", "OTDR", "OLTS", "Copper", "Fiber DFU", "Probe View", "Other"};
  for (int value = -3; value <= 10; ++value) {
    EXPECT_STREQ(toString(static_cast<ModuleCategory>(value)), value >= 0 && value <= 6 ? names[value] : "") << value;
  }
}
