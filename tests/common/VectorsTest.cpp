#include <libcrossplatform/common/ResultFile.h>

#include "PFileTesting.h"
#include "vectors/Vectors.h"

namespace {

using PFileTesting::Bytes;

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

TEST(Vectors, ReadersAnswerAsEver) {
  Vectors::expectAnswers(readersAnswer);
}
