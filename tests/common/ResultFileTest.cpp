#include <libcrossplatform/common/ResultFile.h>

#include <array>

#include "PFileTesting.h"
#include "vectors/Vectors.h"

using namespace PFileTesting;
using namespace Veltra;
using PFile::SECTION_FLAG_COMPRESS;
using RecordTesting::withByte;

namespace {

ResultSummary sampleResult() {
  const DisplayMeas none;
  return ResultSummary("A-017", RESULT_TYPE_FIBER, 0, STATUS_PASS, none, none, 0, 0, 0, 0);
}

Bytes sampleBytes() {
  ResultSummary r = sampleResult();
  return RecordTesting::bytesOf(r);
}

using Statuses = std::array<int, 3>;  // of the path without and with all sections, and of the buffer

struct ResultFileTest : ::testing::Test {
  Statuses statusesOf(const Bytes& image) {
    RecordTesting::writeFile(path, image);
    const auto size = static_cast<unsigned>(image.size());
    ResultSummary r;
    const Statuses statuses = {readResultSummary(r, path.c_str(), false), readResultSummary(r, path.c_str(), true),
                               readResultSummary(r, image.data(), size)};
    ResultType type = RESULT_TYPE_COPPER;
    EXPECT_EQ(readResultType(type, path.c_str()), statuses[0]);
    EXPECT_EQ(type, statuses[0] == 0 ? RESULT_TYPE_FIBER : RESULT_TYPE_COPPER);
    type = RESULT_TYPE_COPPER;
    EXPECT_EQ(readResultType(type, image.data(), size), statuses[2]);
    EXPECT_EQ(type, statuses[2] == 0 ? RESULT_TYPE_FIBER : RESULT_TYPE_COPPER);
    return statuses;
  }
  TempDir dir;
  const std::string path = dir.file("a.res");
};

/// The codes of an opened reader: of opening, then of its sections.
template <class Reader>
Json::Value codesOf(int opened, Reader& reader) {
  Json::Value codes(Json::arrayValue);
  codes.append(opened);
  for (int failures = 0; codes[0] == 0 && failures < 2;) {
    PFile::Section section;
    const int code = reader.read(section, true);
    codes.append(code);
    failures += code == PFile::PFILE_END_OF_DATA ? 2 : code != PFile::PFILE_OK ? 1 : 0;
  }
  return codes;
}

void readersAnswer(const std::string& path, Json::Value& answers) {
  const Bytes bytes = RecordTesting::fileBytes(path);
  const auto size = static_cast<unsigned>(bytes.size());
  PFile::FileReader file;
  answers["file"] = codesOf(file.open(path.c_str()), file);
  PFile::MemReader memory, quick;
  answers["memory"] = codesOf(memory.open(bytes.data(), size), memory);
  answers["quick"] = codesOf(quick.quickOpen(bytes.data(), size), quick);
  Veltra::ResultSummary summary;
  const Veltra::ResultFileCheck check = Veltra::checkResultFile(summary, path.c_str());
  Json::Value& checked = answers["resultFile"];
  checked["status"] = check.status;
  checked["section"] = check.section;
  checked["offset"] = static_cast<Json::UInt64>(check.offset);
  answers["summaryFromFile"] = Veltra::readResultSummary(summary, path.c_str(), false);
  answers["summaryFromMemory"] = Veltra::readResultSummary(summary, bytes.data(), size);
}

}  // namespace

TEST_F(ResultFileTest, StatusesOfBothForms) {
  const Bytes summary = sampleBytes();
  const auto only = [](uint16_t version, const Bytes& data) { return imageOf({{200, version, 0, data}}); };
  const auto with = [&summary](uint16_t version, uint16_t plotVersion) {
    return imageOf({{200, version, SECTION_FLAG_COMPRESS, summary}, {301, plotVersion, 0, {1}}});
  };
  const Bytes good = only(1, summary);
  struct Row {
    const char* name;
    Bytes image;
    Statuses expected;
  };
  const Row rows[] = {
      {"a summary alone", good, {0, 0, 0}},
      {"another section first", imageOf({{300, 12, 0, {1}}, {200, 1, 0, summary}}), {4, 4, 4}},
      {"summary section too new", with(2, 3), {2, 2, 0}},
      {"plot section too new", with(1, 4), {0, 2, 0}},
      {"too new, and a damaged section after it", withByte(with(2, 3), with(2, 3).size() - 1, 2), {2, 3, 0}},
      {"record too new", only(1, withByte(summary, 3, 2)), {2, 2, 2}},
      {"another record", only(1, withByte(summary, 7, 2)), {3, 3, 3}},
      {"record cut", only(1, Bytes(summary.begin(), summary.end() - 1)), {3, 3, 3}},
      {"compressed, claiming to hold nothing", EMPTY_FILE + sectionOfNothing(200), {3, 3, 3}},
  };
  for (const Row& row : rows) EXPECT_EQ(statusesOf(row.image), row.expected) << row.name;
  ResultSummary r;
  EXPECT_EQ(readResultSummary(r, dir.file("none").c_str(), false), 4);
  EXPECT_EQ(readResultSummary(r, static_cast<unsigned char const*>(nullptr), 24), 4);
}

using ResultFileDeathTest = ResultFileTest;

TEST_F(ResultFileDeathTest, ASectionOfUnknownTypeIsFatalWhenAllAreReadAndGoodWhenTheyAreChecked) {
  RecordTesting::writeFile(path, imageOf({{200, 1, 0, sampleBytes()}, {900, 77, 0, {1}}, {301, 3, 0, {2}}}));
  ResultSummary r;
  EXPECT_EQ(readResultSummary(r, path.c_str(), false), 0);
  EXPECT_DEATH((void)readResultSummary(r, path.c_str(), true),
               "Invalid section type, libcrossplatform/common/ResultFile:");
  ResultSummary checked;
  EXPECT_EQ(checkResultFile(checked, path.c_str()).section, 4U);
  EXPECT_EQ(RecordTesting::bytesOf(checked), sampleBytes());
  RecordTesting::writeFile(path, imageOf({{200, 1, 0, {1, 2}}, {301, 4, 0, {2}}}));
  EXPECT_EQ(checkResultFile(r, path.c_str()).section, 1U) << "a newer section does not hide a damaged summary";
}

TEST_F(ResultFileTest, WritesRecordsIntoFilesAndMemory) {
  ResultSummary r = sampleResult();
  const Bytes expected = imageOf({{200, 1, SECTION_FLAG_COMPRESS, sampleBytes()}, {300, 12, 0, sampleBytes()}});
  PFile::FileWriter file;
  ASSERT_EQ(file.open(path.c_str()), 0);
  MemFileWriter intoFile(&file);
  Bytes image(expected.size());
  PFile::MemWriter memory;
  ASSERT_EQ(memory.open(image.data(), static_cast<unsigned>(image.size())), 0);
  MemFileWriter intoMemory(&memory);
  for (MemFileWriter* const writer : {&intoFile, &intoMemory}) {
    EXPECT_EQ(writer->writeSection(r, 1, 200, SECTION_FLAG_COMPRESS, 6), 0);
    EXPECT_EQ(writer->writeSection(r, 12, 300, 0, 6), 0);
    EXPECT_EQ(writer->writeSection(r, 1, 200, SECTION_FLAG_COMPRESS, 10), 1) << "no such level";
  }
  ASSERT_EQ(file.close(false), 0);
  EXPECT_EQ(intoFile.writeSection(r, 1, 200, 0, 0), 1) << "the file is closed";
  ASSERT_EQ(memory.close(), 0);
  EXPECT_EQ(image, expected);
  EXPECT_EQ(RecordTesting::fileBytes(path), expected);
  ResultSummary read;
  EXPECT_EQ(readResultSummary(read, path.c_str(), true), 0);
  EXPECT_EQ(RecordTesting::bytesOf(read), sampleBytes());
}

TEST(Vectors, ReadersAnswerAsEver) {
  Vectors::expectAnswers(readersAnswer);
}
