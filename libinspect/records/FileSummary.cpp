#include <libinspect/records/FileSummary.h>

#include <fmt/format.h>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libinspect/container/Doctor.h>

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
  if (record.outcome != DecodedRecord::DECODED || record.id != Veltra::ResultSummary::SERIAL_TYPE_ID) return;
  Marshal::ByteStreamReader in(bytes.data(), static_cast<uint32_t>(bytes.size()));
  out.hasSummary = out.summary.deserialize(in) == Marshal::STREAM_OK;
}

}  // namespace

FileSummary summarize(const ByteSource& source) {
  FileSummary out;
  out.report = walk(source, WalkDepth::HEADERS_AND_CRCS);
  out.kind = kindOf(out.report);
  readSummary(source, out);
  return out;
}

const char* toString(DataVerdict verdict) {
  switch (verdict) {
    case DataVerdict::OK:
      return "ok";
    case DataVerdict::WRONG:
      return "wrong";
    case DataVerdict::CUT:
      return "cut";
    case DataVerdict::NOT_CHECKED:
      return "not checked";
  }
  return "";
}

Json::Value toJson(const Finding& finding) {
  Json::Value json(Json::objectValue);
  json["code"] = toString(finding.code);
  json["meaning"] = meaningOf(finding.code);
  json["offset"] = static_cast<Json::UInt64>(finding.offset);
  json["section"] = finding.section ? Json::Value(*finding.section) : Json::Value();
  json["wanted"] = finding.wanted;
  json["found"] = finding.found;
  return json;
}

Json::Value toJson(const SectionInfo& section) {
  Json::Value json(Json::objectValue);
  const PFile::Header& header = section.header;
  const char* const name = PFile::sectionIdToString(header.type);
  json["number"] = section.number;
  json["offset"] = static_cast<Json::UInt64>(section.offset);
  json["type"] = header.type;
  json["name"] = name != nullptr ? Json::Value(name) : Json::Value();
  json["version"] = header.version;
  json["flags"] = header.flags;
  json["storedSize"] = header.dataSize;
  json["originalSize"] = section.originalSize ? *section.originalSize : header.dataSize;
  json["compressed"] = (header.flags & PFile::SECTION_FLAG_COMPRESS) != 0;
  json["crc"] = toString(section.verdict);
  return json;
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

std::string nameOf(const Finding& finding) {
  return fmt::format("{} {}", toString(finding.code), meaningOf(finding.code));
}

std::string placeOf(const Finding& finding) {
  const std::string section = finding.section ? fmt::format(", section {}", *finding.section) : "";
  return fmt::format("offset {}{}", finding.offset, section);
}

std::string detailsOf(const Finding& finding) {
  return fmt::format("wanted {}, found {}", finding.wanted, finding.found);
}

std::string describe(const Finding& finding) {
  return fmt::format("{}: {}: {}", placeOf(finding), nameOf(finding), detailsOf(finding));
}

std::string describe(const std::string& file, const Finding& finding) {
  return file + ": " + describe(finding);
}

}  // namespace Inspect
