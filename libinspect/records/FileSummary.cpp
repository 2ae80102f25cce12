#include <libinspect/records/FileSummary.h>

#include <libinspect/records/RecordCheck.h>

namespace Inspect {
namespace {

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

void readSummary(const ByteSource& source, FileSummary& out) {
  const std::optional<SectionInfo>& first = out.report.first;
  if (!first || first->header.type != PFile::SECTION_RESULT_SUMMARY) return;
  // Damage of the payload itself was found by the walk.
  if (first->verdict != DataVerdict::OK) return;
  std::vector<uint8_t> bytes;
  const DecodedRecord record = examineRecord(source, *first, bytes, out.report.findings);
  const auto* const summary = record.as<Veltra::ResultSummary>();
  out.hasSummary = summary != nullptr;
  if (summary != nullptr) out.summary = *summary;
}

}  // namespace

FileSummary summarize(const ByteSource& source) {
  FileSummary out;
  out.report = walk(source, WalkDepth::HEADERS_AND_CRCS);
  out.kind = kindOf(out.report);
  readSummary(source, out);
  return out;
}

Json::Value toJson(const FileSummary& summary) {
  Json::Value json(Json::objectValue);
  const ContainerReport& report = summary.report;
  json["file"] = report.name;
  json["kind"] = summary.kind;
  json["bytes"] = static_cast<Json::UInt64>(report.size);
  json["recordedBytes"] = report.recordedLength ? Json::Value(*report.recordedLength) : Json::Value();
  json["sections"] = static_cast<Json::UInt64>(report.sections);
  json["damaged"] = report.damaged();
  json["findings"] = Json::Value(Json::arrayValue);
  for (const Finding& finding : report.findings) json["findings"].append(toJson(finding));
  json["findingsLeftOut"] = static_cast<Json::UInt64>(report.findings.leftOut());
  json["summary"] =
      summary.hasSummary ? summaryJson(summary.summary)[Veltra::ResultSummary::JSON_ROOT_NAME] : Json::Value();
  return json;
}

}  // namespace Inspect
