#include <libinspect/records/FileJudge.h>

#include <optional>

#include <fmt/format.h>

#include <libinspect/container/Doctor.h>
#include <libinspect/records/RecordCheck.h>

namespace Inspect {
namespace {

/// A hundred times the size of the records of a result, and a fraction of a second of work: a small file can contain
/// gigabytes of them.
constexpr uint64_t MOST_RECORD_BYTES = uint64_t{1} * 1024 * 1024;

std::string kindOf(const ContainerReport& report) {
  for (const Finding& finding : report.findings) {
    if (finding.code == E02_NO_FILE_HEADER) return "not a container";
  }
  if (!report.first) return report.damaged() ? "damaged container" : "empty container";
  switch (report.first->header.type) {
    case PFile::SECTION_RESULT_SUMMARY:
      return "result file";
    case PFile::SECTION_LIMIT_MANIFEST:
      return "limit database package";
    case PFile::SECTION_CABLE_MANIFEST:
      return "cable database package";
    default:
      return "container";
  }
}

class Judge {
 public:
  Judge(const ByteSource& source, Examination examination) : _source(source), _examination(examination) {}

  JudgedFile run(const IsNamedAsResult& isNamedAsResult) {
    const WalkDepth depth = _examination == Examination::QUICK ? WalkDepth::HEADERS : WalkDepth::HEADERS_AND_CRCS;
    _file.report = examine(_source, depth, [this](const SectionInfo& section, Findings& findings) {
      if (section.number > 0) look(section, findings);
    });
    ContainerReport& report = _file.report;
    if (_hasResultData && report.first->header.type != PFile::SECTION_RESULT_SUMMARY) {
      const std::string later = _summaryAt ? fmt::format(" and the summary as section {}", *_summaryAt) : "";
      report.findings.add({E11_NO_RESULT_SUMMARY, report.first->offset, std::nullopt,
                           "a result summary as the first section", typeName(report.first->header.type) + later});
    }
    _file.kind = kindOf(report);
    _file.state = report.damaged() ? FileState::DAMAGED : FileState::INTACT;
    if (report.isNoContainer() && !looksLost(_source) && !(isNamedAsResult && isNamedAsResult(report.path))) {
      _file.state = FileState::OTHER;
    }
    if (_file.state == FileState::DAMAGED && report.findings.begin()->code == E02_NO_FILE_HEADER) {
      const Recovery recovery = findSections(_source);
      _file.hasNothingIntact = recovery.kept.empty() && !recovery.isContainer;
    }
    return std::move(_file);
  }

 private:
  void look(const SectionInfo& section, Findings& findings) {
    _hasResultData = _hasResultData || isResultData(section.header.type);
    if (section.header.type == PFile::SECTION_RESULT_SUMMARY && !_summaryAt) _summaryAt = section.number;
    if (section.verdict != DataVerdict::OK) return;
    if (section.number == 1 && section.header.type == PFile::SECTION_RESULT_SUMMARY) {
      readSummary(section, findings);
    } else if (_examination == Examination::DEEP) {
      const uint64_t before = findings.count();
      lookDeep(section, findings);
      _file.deepFindings += findings.count() - before;
    }
  }

  void readSummary(const SectionInfo& section, Findings& findings) {
    std::vector<uint8_t> bytes;
    const DecodedRecord record = examineRecord(_source, section, bytes, findings);
    const auto* const summary = record.as<Veltra::ResultSummary>();
    _file.hasSummary = summary != nullptr;
    if (summary != nullptr) _file.summary = *summary;
    if (record.outcome != DecodedRecord::NO_RECORD) _recordBytes += bytes.size();
  }

  void lookDeep(const SectionInfo& section, Findings& findings) {
    std::vector<uint8_t> bytes;
    if (_recordBytes < MOST_RECORD_BYTES) {
      const DecodedRecord record = examineRecord(_source, section, bytes, findings);
      if (record.outcome != DecodedRecord::NO_RECORD) _recordBytes += bytes.size();
      return;
    }
    std::string error;
    const bool isCompressed = (section.header.flags & PFile::SECTION_FLAG_COMPRESS) != 0;
    if (isCompressed && !loadPayload(_source, section, bytes, error)) findings.add(inflateFinding(section));
    if (_isToldOfRest) return;
    findings.add({W06_RECORDS_NOT_DECODED, section.offset, section.number,
                  fmt::format("at most {} bytes of records in a file", MOST_RECORD_BYTES),
                  fmt::format("{} before this section", _recordBytes)});
    _isToldOfRest = true;
  }

  const ByteSource& _source;
  Examination _examination;
  JudgedFile _file;
  bool _hasResultData = false;
  std::optional<int> _summaryAt;  // the first, intact or not: without a CRC nobody knows
  uint64_t _recordBytes = 0;
  bool _isToldOfRest = false;
};

}  // namespace

const char* toString(FileState state) {
  switch (state) {
    case FileState::INTACT:
      return "intact";
    case FileState::DAMAGED:
      return "damaged";
    case FileState::OTHER:
      return "not a container";
  }
  return "";
}

JudgedFile judge(const ByteSource& source, Examination examination, const IsNamedAsResult& isNamedAsResult) {
  return Judge(source, examination).run(isNamedAsResult);
}

NextStep nextStep(const JudgedFile& file, const Finding& finding, OutputPlace place, Charset charset) {
  if (file.hasNothingIntact && asksForRecovery(finding)) return {"", "copy the file from the instrument again"};
  return {nextCommand(file.report.path, finding, place, charset), ""};
}

Json::Value diagnosisJson(const JudgedFile& file, bool isDeep) {
  Json::Value json(Json::objectValue);
  json["file"] = file.report.name;
  json["damaged"] = file.state == FileState::DAMAGED;
  if (isDeep) json["deepFindings"] = static_cast<Json::UInt64>(file.deepFindings);
  json["findingsLeftOut"] = static_cast<Json::UInt64>(file.report.findings.leftOut());
  return json;
}

Json::Value toJson(const JudgedFile& file, const Finding& finding, OutputPlace place) {
  Json::Value json = toJson(finding);
  const std::string next = nextStep(file, finding, place).command;
  json["next"] = next.empty() ? Json::Value() : Json::Value(next);
  return json;
}

bool hasNothingToRecover(const ByteSource& source, const Recovery& recovery) {
  return recovery.kept.empty() && !recovery.isContainer && judge(source).state != FileState::INTACT;
}

std::string noContainerText(const JudgedFile& file) {
  return fmt::format("{}: not a container: {}", file.report.name, detailsOf(*file.report.findings.begin()));
}

Json::Value toJson(const JudgedFile& file) {
  Json::Value json(Json::objectValue);
  const ContainerReport& report = file.report;
  json["file"] = report.name;
  json["kind"] = file.kind;
  json["bytes"] = static_cast<Json::UInt64>(report.size);
  json["recordedBytes"] = report.recordedLength ? Json::Value(*report.recordedLength) : Json::Value();
  json["sections"] = static_cast<Json::UInt64>(report.sections);
  json["damaged"] = file.state == FileState::DAMAGED;
  json["findings"] = Json::Value(Json::arrayValue);
  for (const Finding& finding : report.findings) json["findings"].append(toJson(finding));
  json["findingsLeftOut"] = static_cast<Json::UInt64>(report.findings.leftOut());
  json["summary"] = file.hasSummary ? summaryJson(file.summary)[Veltra::ResultSummary::JSON_ROOT_NAME] : Json::Value();
  return json;
}

const std::vector<std::string>& fileColumns() {
  static const std::vector<std::string> COLUMNS = {"file", "kind", "damaged", "bytes", "recordedBytes", "sections"};
  return COLUMNS;
}

}  // namespace Inspect
