#include <libcrossplatform/common/PFileSectionTypes.h>

#include <libcrossplatform/common/ResultFile.h>

#include "RecordTesting.h"

using namespace PFile;

TEST(PFileSectionTypes, NamesNewestVersionsAndClassesOfEveryType) {
  std::string shown = "type name version [end 2] [OTDR raw] [OTDR test]\n";
  for (unsigned id = 0; id <= 0x20000; ++id) {
    char const* const name = id <= 0xFFFF ? sectionIdToString(static_cast<unsigned short>(id)) : nullptr;
    const auto version = id <= 0xFFFF ? Veltra::newestKnownVersion(static_cast<uint16_t>(id)) : boost::none;
    const std::string classes = std::string(isEnd2Section(id) ? " end2" : "") + (isOtdrRawSection(id) ? " raw" : "") +
                                (isOtdrTestSection(id) ? " test" : "");
    if (name == nullptr && !version && classes.empty()) continue;
    shown += std::to_string(id) + " " + (name != nullptr ? name : "-") + " " +
             (version ? std::to_string(*version) : "-") + classes + "\n";
  }
  RecordTesting::expectGoldenText(shown, "section_types");
  for (unsigned id = 0x80000000u; id < 0x80000200u; ++id) {
    EXPECT_FALSE(isEnd2Section(id) || isOtdrRawSection(id) || isOtdrTestSection(id)) << id;
  }
}

TEST(ReaderStatus, OfEachStreamStatus) {
  std::string container, result;
  for (int i = -8; i < 3; ++i) {
    container += std::to_string(streamOpToReaderStatus(i));
    result += std::to_string(Veltra::streamOpToReaderStatus(i));
  }
  EXPECT_EQ(container, "33223333033");
  EXPECT_EQ(result, "44323333044");
}
