#include <libinspect/container/Recover.h>
#include <libinspect/records/FileJudge.h>

#include "vectors/Vectors.h"

namespace {

Json::Value sectionJson(const Inspect::ByteSource& source, const Inspect::SectionInfo& section) {
  const PFile::Header& header = section.header;
  Json::Value json(Json::objectValue);
  json["offset"] = static_cast<Json::UInt64>(section.offset);
  json["magic"] = header.magic;
  json["type"] = header.type;
  json["version"] = header.version;
  json["flags"] = header.flags;
  json["stored"] = header.dataSize;
  json["data"] = toString(section.verdict);
  std::vector<uint8_t> bytes;
  std::string error;
  if (section.verdict == Inspect::DataVerdict::OK && loadPayload(source, section, bytes, error)) {
    json["original"] = static_cast<Json::UInt64>(bytes.size());
    json["crc"] = PFile::crc32Of(bytes.data(), static_cast<unsigned>(bytes.size()));
  }
  return json;
}

void inspectionAnswers(const std::string& path, Json::Value& answers) {
  Inspect::ByteSource source;
  std::string error;
  ASSERT_TRUE(source.open(path, error)) << error;
  Json::Value& sections = answers["sections"] = Json::Value(Json::arrayValue);
  for (const Inspect::SectionInfo& section : Inspect::sectionsOf(source)) {
    sections.append(sectionJson(source, section));
  }
  Json::Value& findings = answers["findings"] = Json::Value(Json::arrayValue);
  const Inspect::JudgedFile file = Inspect::judge(source, Inspect::Examination::DEEP);
  answers["state"] = toString(file.state);
  for (const Inspect::Finding& finding : file.report.findings) {
    Json::Value& row = findings.append(Json::Value(Json::objectValue));
    row["code"] = toString(finding.code);
    row["offset"] = static_cast<Json::UInt64>(finding.offset);
    row["section"] = finding.section ? Json::Value(*finding.section) : Json::Value();
  }
  Json::Value& recovered = answers["recovered"] = Json::Value(Json::arrayValue);
  for (const Inspect::SectionInfo& section : Inspect::findSections(source).kept) {
    recovered.append(static_cast<Json::UInt64>(section.offset));
  }
  answers["summary"] = toJson(file)["summary"];
}

TEST(Vectors, InspectionAnswersAsEver) {
  Vectors::expectAnswers(inspectionAnswers);
}

}  // namespace
