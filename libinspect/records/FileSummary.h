#pragma once

#include <string>

#include <libcrossplatform/common/ResultSummary.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {

/// What a file is, told from its first section.
struct FileSummary {
  ContainerReport report;
  std::string kind;         ///< "result file", "limit database package", "container", "not a container", ...
  bool hasSummary = false;  ///< the result summary below was read
  Veltra::ResultSummary summary;
};

/// Walks a file, headers and CRCs, and reads its summary. A summary that cannot be read is a finding of the report.
FileSummary summarize(const ByteSource& source);

/// The JSON form: file, kind, sizes, sections, findings and the summary's members.
Json::Value toJson(const FileSummary& summary);
Json::Value toJson(const Finding& finding);
Json::Value toJson(const SectionInfo& section);
/// One line for people: "offset 24, section 1: E04 data CRC differs: wanted ..., found ..."
std::string describe(const Finding& finding);
/// The same after "FILE: ".
std::string describe(const std::string& file, const Finding& finding);
/// Its three parts: "offset 24, section 1", "E04 data CRC differs" and "wanted ..., found ..."
std::string placeOf(const Finding& finding);
std::string nameOf(const Finding& finding);
std::string detailsOf(const Finding& finding);

/// "ok", "wrong", "cut" or "not checked".
const char* toString(DataVerdict verdict);

}  // namespace Inspect
