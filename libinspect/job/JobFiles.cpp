#include <libinspect/job/JobFiles.h>

#include <algorithm>
#include <utility>

namespace Inspect {

FileNote noteOf(const JudgedFile& file, OutputPlace place) {
  const ContainerReport& report = file.report;
  FileNote note;
  note.file = report.name;
  note.isDamaged = file.state == FileState::DAMAGED;
  note.leftOut = report.findings.leftOut();
  for (const Finding& finding : report.findings) {
    if (note.findings.size() < FileNote::MOST_FINDINGS) {
      note.findings.push_back(finding);
    } else {
      ++note.leftOut;
    }
    if (!note.next.empty() || !note.advice.empty()) continue;
    NextStep step = nextStep(file, finding, place);
    note.next = std::move(step.command);
    note.advice = std::move(step.advice);
  }
  return note;
}

void JobFiles::add(const std::string& name, const ReadOutcome& outcome, const JudgedFile* file, const FileRun& run) {
  const bool isRead = outcome.state == ReadOutcome::WAS_READ && file != nullptr;
  const bool isOther = isRead && file->state == FileState::OTHER;
  const std::string shown = inputName(name);
  if (isOther && !run.isNamed(name)) {
    ++others;
    return;
  }
  if (!isRead || isOther) unread.push_back(shown);
  if (outcome.state == ReadOutcome::LEFT_OUT) leftOut.push_back(shown);
  const bool hasId = file != nullptr && file->hasSummary;
  const bool isDamaged = isRead ? file->state == FileState::DAMAGED : outcome.state != ReadOutcome::LEFT_OUT;
  if (isDamaged && !hasId) lost.push_back(shown);
  if (file == nullptr || isOther) return;
  if (file->hasSummary) rows.push_back({shown, file->summary, !isRead || file->state == FileState::DAMAGED});
  if (!isRead) return;
  if (!file->report.findings.empty()) {
    notes.push_back(noteOf(*file, run.sharesName(name) ? OutputPlace::BESIDE_INPUT : OutputPlace::CURRENT_FOLDER));
  } else if (!file->hasSummary) {
    withoutResult.push_back(shown);
  }
}

void JobFiles::sort() {
  sortRows(rows);
  std::sort(notes.begin(), notes.end(),
            [](const FileNote& a, const FileNote& b) { return comesBefore(a.file, b.file); });
  std::sort(withoutResult.begin(), withoutResult.end(), comesBefore);
}

JobFiles readJob(const FileRun& run, const ReadingOptions& options, const OnFile& onFile, const OnRow& onRow) {
  JobFiles job;
  const auto ask = [&run](const ByteSource& source) {
    return judge(source, Examination::ORDINARY, [&run](const std::string& path) { return run.isNamedAsResult(path); });
  };
  askEach<JudgedFile>(run.files(), options, ask,
                      [&](const std::string& name, const ReadOutcome& outcome, const std::optional<JudgedFile>& file) {
                        const JudgedFile* const judged = file ? &*file : nullptr;
                        onFile(name, outcome, judged);
                        job.add(name, outcome, judged, run);
                        if (!onRow) return;
                        for (const ResultRow& row : job.rows) onRow(row);
                        const bool isEmpty = job.isEmpty();
                        const std::size_t others = job.others;
                        job = JobFiles();
                        job.hasPassed = !isEmpty;
                        job.others = others;
                      });
  job.others += run.passedOver();
  job.sort();
  return job;
}

}  // namespace Inspect
