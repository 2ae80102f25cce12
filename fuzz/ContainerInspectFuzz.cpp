// What the command does with a file: doctor, recover, annotate, diff. Their answers must fit each other and the
// readers.
#include <set>

#include <libinspect/container/FileDiff.h>
#include <libinspect/container/Recover.h>
#include <libinspect/records/FileJudge.h>
#include <libinspect/records/KnownPayload.h>

#include "ContainerImage.h"
#include "Scratch.h"

using namespace Inspect;

namespace {

/// Looking closer finds more, and never less.
void checkFindsAll(const ContainerReport& closer, const ContainerReport& report) {
  if (closer.findings.leftOut() > 0) return;
  std::set<std::string> found;
  for (const Finding& finding : closer.findings) found.insert(describe(closer.name, finding));
  for (const Finding& finding : report.findings) {
    FUZZ_CHECK(found.count(describe(report.name, finding)) == 1);
    FUZZ_CHECK(nextCommand("-", finding).empty() && !describe(report.name, finding).empty());
    FUZZ_CHECK(finding.offset <= report.size);
  }
}

bool has(const ContainerReport& report, FindingCode code) {
  return std::any_of(report.findings.begin(), report.findings.end(), [&](const Finding& f) { return f.code == code; });
}

/// A file without damage is one that the reader reads to its end, and the other way round.
void checkAgainstReader(const ContainerReport& report, const char* path) {
  if (has(report, W03_BYTES_AFTER_END)) return;  // the reader takes them for a section
  PFile::FileReader reader;
  int code = reader.open(path);
  const bool isOpen = code == PFile::PFILE_OK;
  while (code == PFile::PFILE_OK) {
    PFile::Section section;
    code = reader.read(section, false);
  }
  const bool good = isOpen && code == PFile::PFILE_END_OF_DATA;
  // A cut between sections, a wrong total length and a file header without one are nothing to the reader.
  const bool onlyLength = std::all_of(report.findings.begin(), report.findings.end(), [](const Finding& f) {
    return !isDamage(f.code) || f.code == E06_LENGTH_DIFFERS || f.code == E05_TRUNCATED || f.code == E02_NO_FILE_HEADER;
  });
  FUZZ_CHECK(!good || onlyLength);
  FUZZ_CHECK(good || report.damaged());
}

/// A record is the same record whether its fields are noted or not, and they cover it without a gap.
void checkRecord(const ByteSource& source, const SectionInfo& section) {
  std::vector<uint8_t> bytes;
  std::string error;
  if (!loadPayload(source, section, bytes, error)) {
    FUZZ_CHECK(!error.empty());
    return;
  }
  uint32_t at = 0;
  const DecodedRecord plain = decodeRecord(bytes);
  const DecodedRecord traced = decodeRecord(bytes, [&at](const TracedField& field) {
    FUZZ_CHECK(field.offset == at);
    at += field.size;
  });
  FUZZ_CHECK(plain.outcome == traced.outcome && plain.status == traced.status && plain.name == traced.name);
  if (plain.outcome == DecodedRecord::NO_RECORD) return;
  FUZZ_CHECK(plain.used <= bytes.size());
  plain.toJson(false);
  maskSecrets(bytes, Inspect::decodeRecord(bytes));
  if (plain.outcome == DecodedRecord::DECODED) FUZZ_CHECK(at == plain.used && traced.used == plain.used);
}

bool isDataSection(const SectionInfo& section) {
  return section.header.type != PFile::FILE_HEADER_TYPE;
}

/// Kept and lost ranges follow each other and lie within the file.
void checkRanges(const Recovery& recovery, uint64_t size) {
  uint64_t end = 0, bytes = 0;
  for (const SectionInfo& section : recovery.kept) {
    FUZZ_CHECK(section.offset >= end);
    end = section.payloadOffset() + section.header.dataSize;
    bytes += end - section.offset;
  }
  FUZZ_CHECK(end <= size);
  end = 0;
  for (const LostRange& lost : recovery.lost) {
    FUZZ_CHECK(lost.offset >= end && lost.bytes > 0);
    end = lost.offset + lost.bytes;
    bytes += lost.bytes;
  }
  FUZZ_CHECK(end <= size && bytes <= size);
  int number = 0;
  for (const LostSection& lost : recovery.lostSections) {
    FUZZ_CHECK(lost.section.number > number && lost.section.offset < size && !toJson(lost).empty());
    number = lost.section.number;
  }
}

/// Up to the first damage recover keeps what the walk found.
void checkKept(const Recovery& recovery, const std::vector<SectionInfo>& sections) {
  std::size_t kept = 0;
  for (const SectionInfo& section : sections) {
    if (section.verdict != DataVerdict::OK) return;
    if (!isDataSection(section)) continue;
    FUZZ_CHECK(kept < recovery.kept.size() && recovery.kept[kept].offset == section.offset);
    ++kept;
  }
}

/// What recover writes is a container in order, which holds what was kept, and nothing is lost the second time.
void checkRecovery(const ByteSource& source, const ContainerReport& report, const std::vector<SectionInfo>& sections) {
  static const Fuzz::ScratchFile FILE;
  const std::string path = FILE.path();
  const Recovery recovery = findSections(source);
  checkRanges(recovery, source.size());
  checkKept(recovery, sections);
  if (!report.damaged()) {
    const auto wanted = std::count_if(sections.begin(), sections.end(), isDataSection);
    FUZZ_CHECK(recovery.kept.size() == static_cast<std::size_t>(wanted) || has(report, W03_BYTES_AFTER_END));
    FUZZ_CHECK(recovery.wasClosed);
  }
  std::string error;
  FUZZ_CHECK(writeRecovered(source, recovery, path, error));
  FUZZ_CHECK(FILE.isAlone());
  ByteSource output;
  FUZZ_CHECK(output.open(path, error));
  FUZZ_CHECK(!walk(output, WalkDepth::HEADERS_AND_CRCS).damaged());
  const Recovery again = findSections(output);
  FUZZ_CHECK(again.wasClosed && again.lost.empty() && again.missing == 0);
  FUZZ_CHECK(again.kept.size() == recovery.kept.size());
  FUZZ_CHECK(isRecovered(source, recovery, output));
}

}  // namespace

void Fuzz::runTarget(const Input& input) {
  const std::string& path = asFile(input);
  ByteSource source;
  std::string error;
  FUZZ_CHECK(source.open(path, error) && source.size() == input.size);
  const ContainerReport quick = walk(source, WalkDepth::HEADERS);
  const ContainerReport ordinary = walk(source, WalkDepth::HEADERS_AND_CRCS);
  if (ordinary.findings.leftOut() > 0) return;  // what is found last was not kept
  checkFindsAll(ordinary, quick);
  checkAgainstReader(ordinary, path.c_str());
  const std::vector<SectionInfo> sections = sectionsOf(source);
  FUZZ_CHECK(sections.size() == ordinary.sections);
  checkRecovery(source, ordinary, sections);

  Fuzz::DeclaredSizes declared;
  for (const SectionInfo& section : sections) {
    const std::size_t payload = section.payloadOffset();
    if (!declared.allow(section.header, input.data + payload, input.size - payload)) return;
  }
  const JudgedFile judged = judge(source), deep = judge(source, Examination::DEEP);
  checkFindsAll(judged.report, ordinary);
  checkFindsAll(judged.report, judge(source, Examination::QUICK).report);
  checkFindsAll(deep.report, judged.report);
  FUZZ_CHECK(deep.report.findings.count() == judged.report.findings.count() + deep.deepFindings);
  if (judged.state == FileState::OTHER) {
    for (const SectionInfo& kept : findSections(source).kept) FUZZ_CHECK(kept.header.magic != PFile::Header::MAGIC);
  }
  for (const SectionInfo& section : sections) checkRecord(source, section);
  toJson(judged);
  ByteSource same;
  FUZZ_CHECK(same.open(path, error));
  differencesOf(source, same, comparedFields, false, [](const Difference&) { FUZZ_CHECK(false); });
}
