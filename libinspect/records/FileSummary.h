#pragma once

#include <string>

#include <libcrossplatform/common/ResultSummary.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {

/// What a file is, judged by its first section.
struct FileSummary {
  ContainerReport report;
  std::string kind;         ///< "result file", "limit database package", "container", "not a container", ...
  bool hasSummary = false;  ///< the result summary below was read
  Veltra::ResultSummary summary;
};

/// Checks the headers and CRCs of a file and reads its summary. An unreadable summary is a finding of the report.
FileSummary summarize(const ByteSource& source);

/// The JSON form: file, kind, sizes, sections, findings and the summary's members.
Json::Value toJson(const FileSummary& summary);

}  // namespace Inspect
