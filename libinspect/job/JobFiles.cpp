#include <libinspect/job/JobFiles.h>

#include <algorithm>

#include <libinspect/records/FileSummary.h>

namespace Inspect {

FileNote noteOf(const ContainerReport& report) {
  FileNote note;
  note.file = report.name;
  note.isDamaged = report.damaged();
  note.leftOut = report.findings.leftOut();
  for (const Finding& finding : report.findings) {
    if (note.findings.size() < FileNote::MOST_FINDINGS) {
      note.findings.push_back(describe(finding));
    } else {
      ++note.leftOut;
    }
    if (note.next.empty()) note.next = nextCommand(report.path, finding);
  }
  return note;
}

JobFiles readJob(const std::vector<std::string>& files, const ReadingOptions& options, const OnFile& onFile,
                 const OnRow& onRow) {
  JobFiles job;
  const auto tell = [&](const std::string& name, const ReadOutcome& outcome, const std::optional<FileSummary>& file) {
    onFile(name, outcome, file ? file->report.findings : Findings());
    if (onRow) {
      if (file && file->hasSummary) onRow({file->report.name, file->summary});
      return;
    }
    if (!file) {
      if (name != "-") job.unread.push_back(name);
      return;
    }
    const std::string& shown = file->report.name;
    if (file->hasSummary) job.rows.push_back({shown, file->summary});
    if (!file->report.findings.empty()) {
      job.notes.push_back(noteOf(file->report));
    } else if (!file->hasSummary) {
      job.withoutResult.push_back(shown);
    }
  };
  askEach<FileSummary>(files, options, summarize, tell);
  sortRows(job.rows);
  std::sort(job.notes.begin(), job.notes.end(),
            [](const FileNote& a, const FileNote& b) { return comesBefore(a.file, b.file); });
  std::sort(job.withoutResult.begin(), job.withoutResult.end(), comesBefore);
  return job;
}

}  // namespace Inspect
