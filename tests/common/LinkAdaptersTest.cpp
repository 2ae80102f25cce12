#include <libcrossplatform/common/LinkAdapters.h>

#include "RecordTesting.h"

using namespace Veltra;

TEST(LinkAdapters, TableInSearchOrder) {
  std::string table;
  for (const LinkAdapter& adapter : linkAdapters()) {
    SCOPED_TRACE(adapter.id);
    table += std::to_string(adapter.id) + "|" + adapter.key + "|" + adapter.displayName + "|" +
             std::to_string(adapter.ratingMHz) + "|" + std::to_string(adapter.flags) + "\n";
    EXPECT_EQ(findLinkAdapter(adapter.id), &adapter);
    if (adapter.id == 201 || adapter.id == 1) {
      EXPECT_EQ(adapter.partNumber, nullptr);
      continue;
    }
    EXPECT_EQ(adapter.partNumber, "VLA-" + std::to_string(adapter.id));
    EXPECT_EQ(findLinkAdapterByPartNumber(adapter.partNumber), &adapter);
  }
  RecordTesting::expectGoldenText(table, "link_adapters");
}

TEST(LinkAdapters, NoTextAndNoIdOutsideTheTableIsFound) {
  for (const char* text : {"", "VLA-", "VLA-201", "VLA-1", "vla-400", "VLA-400 ", "pla2g"}) {
    EXPECT_EQ(findLinkAdapterByPartNumber(text), nullptr) << text;
  }
  for (const int id : {-1, 999}) EXPECT_EQ(findLinkAdapter(id), nullptr) << id;
}
