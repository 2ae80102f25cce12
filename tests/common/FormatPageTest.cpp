#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/ResultFile.h>

#include "PFileTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

/// The bytes of the fenced block "hex <name>" of docs/format.md; "#" begins a remark.
Bytes bytesOnPage(const std::string& name) {
  std::ifstream page(VELTRA_SOURCE_DIR "/docs/format.md");
  std::string line;
  while (std::getline(page, line) && line != "```hex " + name) {
  }
  Bytes bytes;
  while (std::getline(page, line) && line != "```") {
    std::istringstream digits(line.substr(0, line.find('#')));
    for (unsigned byte = 0; digits >> std::hex >> byte;) bytes.push_back(static_cast<uint8_t>(byte));
    EXPECT_TRUE(digits.eof()) << line;
  }
  return bytes;
}

}  // namespace

TEST(FormatPage, SmallestFileIsWhatAWriterWrites) {
  EXPECT_EQ(bytesOnPage("smallest-file"), PFileTesting::EMPTY_FILE);
}

TEST(FormatPage, ResultFileReadsAsItsRemarksSay) {
  const Bytes file = bytesOnPage("result-file");
  ResultSummary summary;
  ASSERT_EQ(readResultSummary(summary, file.data(), static_cast<unsigned>(file.size())), RESULT_READER_OK);
  EXPECT_EQ(summary,
            ResultSummary("A-017", RESULT_TYPE_COPPER, 1706692500, STATUS_PASS_STAR,
                          DisplayMeas(ScaledInt::fromRaw(452, ScaledInt::SCALED_TO_TENTHS), DISPLAY_TYPE_VALUE),
                          DisplayMeas(ScaledInt::fromRaw(13, ScaledInt::SCALED_TO_TENTHS), DISPLAY_TYPE_LESS_THAN),
                          0x80000001u, 12, 1, 0));
}

TEST(FormatPage, HasAllRecordsUnderTheirNamesWithTheirIds) {
  const std::string page = fileText(VELTRA_SOURCE_DIR "/docs/format.md");
  std::string logNames;
  for (const RecordType& type : recordTypes()) {
    std::ostringstream id;
    id << " id 0x" << std::hex << type.id;
    const std::size_t at = page.find(std::string("\n### ") + type.name + "\n");
    ASSERT_NE(at, std::string::npos) << type.name;
    EXPECT_LT(page.find(id.str(), at), page.find("\n###", at + 1)) << type.name;
    if (const std::string name = Marshal::veltraCommonIdToString(type.id); !name.empty()) logNames += name + "|";
  }
  EXPECT_EQ(logNames, "ResultMetadata|ResultMetadataList|EquipmentInformation|InstrumentSettings|FolderMetadataList|");
}
