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

std::string damageOf(const JudgedFile& file) {
  if (file.state != FileState::DAMAGED) return {};
  for (const Finding& finding : file.report.findings) {
    if (isDamage(finding.code)) return describe(file.report.name, finding);
  }
  return file.report.name + ": damaged";  // after more findings than are kept
}

std::optional<FileRow> fileRowOf(const std::string& name, const ReadOutcome& outcome, const JudgedFile* file,
                                 const FileRun& run) {
  const bool isRead = outcome.state == ReadOutcome::WAS_READ && file != nullptr;
  const bool isOther = isRead && file->state == FileState::OTHER;
  if (isOther && !run.isNamed(name)) return std::nullopt;
  if (isRead && !file->hasSummary && file->state == FileState::INTACT) return std::nullopt;
  FileRow found;
  found.row.file = inputName(name);
  found.row.isDamaged = !isRead || file->state != FileState::INTACT;
  found.hasResult = !isOther && file != nullptr && file->hasSummary;
  if (found.hasResult) found.row.summary = file->summary;
  if (!isRead) {
    found.error = outcome.error;
  } else if (isOther) {
    found.error = noContainerText(*file);
  } else {
    found.error = damageOf(*file);
  }
  return found;
}

void sortRows(std::vector<FileRow>& rows) {
  std::vector<FileRow*> order;  // moved less often than rows
  order.reserve(rows.size());
  for (FileRow& row : rows) order.push_back(&row);
  std::stable_sort(order.begin(), order.end(), [](const FileRow* a, const FileRow* b) {
    if (a->hasResult != b->hasResult) return a->hasResult;
    return a->hasResult ? isBefore(a->row, b->row) : comesBefore(a->row.file, b->row.file);
  });
  std::vector<FileRow> sorted;
  sorted.reserve(rows.size());
  for (FileRow* const row : order) sorted.push_back(std::move(*row));
  rows = std::move(sorted);
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

namespace {

std::function<JudgedFile(const ByteSource&)> judgeIn(const FileRun& run) {
  return [&run](const ByteSource& source) {
    return judge(source, Examination::ORDINARY, [&run](const std::string& path) { return run.isNamedAsResult(path); });
  };
}

}  // namespace

void readRows(const std::vector<std::string>& files, const FileRun& run, const ReadingOptions& options,
              const std::function<void(FileRow)>& onRow) {
  askEach<JudgedFile>(files, options, judgeIn(run),
                      [&](const std::string& name, const ReadOutcome& outcome, const std::optional<JudgedFile>& file) {
                        std::optional<FileRow> row = fileRowOf(name, outcome, file ? &*file : nullptr, run);
                        if (row) onRow(std::move(*row));
                      });
}

JobFiles readJob(const FileRun& run, const ReadingOptions& options, const OnFile& onFile, const OnRow& onRow) {
  JobFiles job;
  askEach<JudgedFile>(run.files(), options, judgeIn(run),
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
