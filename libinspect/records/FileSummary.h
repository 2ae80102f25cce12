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

}  // namespace Inspect
