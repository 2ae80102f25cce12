#include <libcrossplatform/common/ModuleIds.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>

using namespace Veltra;

namespace {

const std::map<int, std::string> MODULE_NAMES = {{100, "KTR-QUAD"},
                                                 {101, "KTR-MM"},
                                                 {102, "KTR-SM"},
                                                 {103, "KTR-HDR"},
                                                 {104, "KTR-HDR+1490"},
                                                 {105, "KTR-HDR+1625"},
                                                 {106, "KTR-HDR-QUAD"},
                                                 {200, "LTM-QUAD"},
                                                 {201, "LTM-MM"},
                                                 {202, "LTM-SM"},
                                                 {300, "QRT-A50"},
                                                 {302, "QRT-A06"},
                                                 {400, "QRT-A80"},
                                                 {500, "PRB-10"},
                                                 {501, "PRB-30"},
                                                 {10100, "DFU: OTDR mid quad"},
                                                 {10101, "DFU: OTDR mid mm"},
                                                 {10102, "DFU: OTDR mid sm"},
                                                 {10103, "DFU: HDR OTDR sm"},
                                                 {10104, "DFU: HDR OTDR sm+1490"},
                                                 {10105, "DFU: HDR OTDR sm+1625"},
                                                 {10106, "DFU: HDR OTDR quad"},
                                                 {10200, "DFU: OLTS mid quad"},
                                                 {10201, "DFU: OLTS mid mm"},
                                                 {10202, "DFU: OLTS mid sm"},
                                                 {10300, "Boot: Copper Class FA"},
                                                 {10302, "Boot: Copper Cat 6A"},
                                                 {10400, "Boot: Copper Cat 8"}};

ModuleId module(int id) {
  return static_cast<ModuleId>(id);
}

int category(int id, bool dfuValid) {
  return getModuleCategory(module(id), static_cast<IsDfuModuleValid>(dfuValid));
}

bool passes(int id, int filter) {
  return isValidModulePerCategory(module(id), static_cast<ModuleCategory>(filter));
}

constexpr int INT_LOW = std::numeric_limits<int>::min();
constexpr int INT_HIGH = std::numeric_limits<int>::max();

}  // namespace

TEST(ModuleId, NamesAndValidityOverTheWholeRange) {
  const auto check = [](int id) {
    const auto row = MODULE_NAMES.find(id);
    ASSERT_EQ(toString(module(id)), row != MODULE_NAMES.end() ? row->second : std::string()) << id;
    ASSERT_EQ(isValidModule(module(id)), row != MODULE_NAMES.end()) << id;
    ASSERT_EQ(isCopperModule(module(id)), id == 300 || id == 302 || id == 400) << id;
    ASSERT_EQ(moduleIdSansDfu(module(id)), id > 9999 ? id - 10000 : id) << id;
  };
  for (int id = -100; id <= 21000; ++id) check(id);
  for (const int id : {INT_LOW, INT_HIGH}) check(id);
}

TEST(ModuleId, CategoryGoesByRangeAndIsNeverFiberDfu) {
  struct Row {
    int first, last, plain, dfuValid;
  };
  const Row rows[] = {{INT_LOW, INT_LOW, 6, 6}, {-100, -1, 6, 6},     {0, 0, 0, 0},         {1, 99, 6, 6},
                      {100, 199, 1, 1},         {200, 299, 2, 2},     {300, 300, 3, 3},     {301, 301, 6, 6},
                      {302, 302, 3, 3},         {303, 399, 6, 6},     {400, 400, 3, 3},     {401, 499, 6, 6},
                      {500, 9999, 5, 5},        {10000, 10000, 6, 0}, {10001, 10099, 6, 6}, {10100, 10199, 6, 1},
                      {10200, 10299, 6, 2},     {10300, 10300, 6, 3}, {10301, 10301, 6, 6}, {10302, 10302, 6, 3},
                      {10400, 10400, 6, 3},     {10500, 19999, 6, 5}, {20000, 20400, 6, 6}, {INT_HIGH, INT_HIGH, 6, 6}};
  for (const Row& row : rows) {
    for (int id = row.first;; ++id) {
      ASSERT_EQ(category(id, false), row.plain) << id;
      ASSERT_EQ(category(id, true), row.dfuValid) << id;
      if (id == row.last) break;
    }
  }
}

TEST(ModuleId, FiltersLetThroughValidModulesOnly) {
  for (int id = -100; id <= 21000; ++id) {
    const bool valid = MODULE_NAMES.count(id) != 0;
    for (int filter = -1; filter <= 7; ++filter) {
      bool expected = false;
      if (filter == 0) expected = id < 10000;
      if (filter == 1) expected = id < 200;
      if (filter == 2) expected = id >= 200 && id < 300;
      if (filter == 3) expected = id == 300 || id == 302 || id == 400;
      if (filter == 4) expected = id >= 10100 && id <= 10202;
      if (filter == 5) expected = id == 500 || id == 501;
      if (filter == 6) expected = id >= 10000;
      ASSERT_EQ(passes(id, filter), valid && expected) << id << " by " << filter;
    }
  }
}

TEST(ModuleCategory, Names) {
  const char* const names[] = {"", "OTDR", "OLTS", "Copper", "Fiber DFU", "Probe View", "Other"};
  for (int value = -3; value <= 10; ++value) {
    EXPECT_STREQ(toString(static_cast<ModuleCategory>(value)), value >= 0 && value <= 6 ? names[value] : "") << value;
  }
}
