#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>

#include "Commands.h"

namespace Command {
namespace {

/// Reading options from the command line, with a progress bar.
Inspect::ReadingOptions readingOf(const Options& options, Progress& progress) {
  Inspect::ReadingOptions reading;
  reading.threads = options.jobs;
  reading.maxSize = options.maxSize;
  if (!progress.active()) return reading;
  reading.onBegin = [&progress](uint64_t bytes) { progress.expect(bytes); };
  reading.onRead = [&progress](uint64_t bytes) { progress.advance(bytes); };
  reading.onTelling = [&progress] { progress.hide(); };
  return reading;
}

/// The exit code for one file; complains if it could not be read.
int codeOfFile(const Inspect::ReadOutcome& outcome, const Inspect::Findings& findings, const Options& options) {
  if (outcome.state == Inspect::ReadOutcome::WAS_READ) return codeOf(findings);
  const bool isLeftOut = outcome.state == Inspect::ReadOutcome::LEFT_OUT;
  if (!isLeftOut || !options.quiet) complain(outcome.error);
  return isLeftOut ? EXIT_WITH_LOSS : EXIT_COULD_NOT;
}

void complainOfFile(const std::string& file, const Inspect::Findings& findings, const Options& options) {
  if (!options.quiet) complainOfEach(file == "-" ? "standard input" : file, findings);
}

}  // namespace

std::vector<std::string> filesOf(const std::vector<std::string>& paths, const Options& options, int& code) {
  std::vector<std::string> faults;
  std::vector<std::string> files = Inspect::filesOf(paths, options.recursive, faults);
  for (const std::string& fault : faults) complain(fault);
  if (!faults.empty()) code = worse(code, EXIT_COULD_NOT);
  return files;
}

bool complainsOfNoFiles(const std::vector<std::string>& paths, const std::vector<std::string>& files) {
  if (files.empty()) complain(fmt::format("{}: no files", fmt::join(paths, ", ")));
  return files.empty();
}

int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                   const std::vector<std::string>& columns, bool complainOfFindings,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  int code = EXIT_DONE;
  const std::vector<std::string> files = filesOf(paths, options, code);
  Progress progress(options.progress);
  AnswerStream answers(options, "files", columns);
  const auto tell = [&](const std::string& file, const Inspect::ReadOutcome& outcome, std::optional<FileAnswer> given) {
    code = worse(code, codeOfFile(outcome, given ? given->findings : Inspect::Findings(), options));
    if (outcome.state != Inspect::ReadOutcome::WAS_READ) return;
    answers.print(given->text, given->json, given->rows, given->list);
    if (given->print && options.format == FORMAT_TABLE) given->print();
    (void)std::fflush(stdout);  // write errors are checked at the end
    if (complainOfFindings) complainOfFile(file, given->findings, options);
  };
  Inspect::askEach<FileAnswer>(files, readingOf(options, progress), answer, tell);
  answers.finish();
  return code;
}

Inspect::JobFiles readJob(const std::vector<std::string>& files, const Options& options, int& code) {
  Progress progress(options.progress);
  const auto tell = [&](const std::string& file, const Inspect::ReadOutcome& outcome,
                        const Inspect::Findings& findings) {
    code = worse(code, codeOfFile(outcome, findings, options));
    if (outcome.state == Inspect::ReadOutcome::WAS_READ) complainOfFile(file, findings, options);
  };
  return Inspect::readJob(files, readingOf(options, progress), tell);
}

void complainOfEach(const std::string& name, const Inspect::Findings& findings) {
  for (const Inspect::Finding& finding : findings) complain(describe(name, finding), toneOf(finding.code));
  if (findings.leftOut() > 0) complain(furtherText(name, findings));
}

bool openInput(Inspect::ByteSource& source, const std::string& path, const Options& options) {
  std::string error;
  source.setLimit(options.maxSize);
  if (source.open(path, error)) return true;
  complain(error);
  return false;
}

int answerAfter(const Inspect::ByteSource& source, int code) {
  if (!source.hasFailed()) return code;
  complain(source.name() + ": read error");
  return EXIT_COULD_NOT;
}

std::optional<Inspect::SectionInfo> sectionOf(const Inspect::ByteSource& source, int number, int& code) {
  Inspect::ContainerReport report;
  std::optional<Inspect::SectionInfo> section = findSection(source, number, report);
  if (section) return section;
  complainOfEach(source.name(), report.findings);
  code = complainOfNoSection(source, report, number);
  return section;
}

int complainOfNoSection(const Inspect::ByteSource& source, const Inspect::ContainerReport& report, int number) {
  complain(fmt::format("{}: has no section {}, {}", source.name(), number,
                       report.sections == 0 ? "nor any other" : fmt::format("only 0 to {}", report.sections - 1)));
  return answerAfter(source, report.damaged() ? EXIT_NO : EXIT_COULD_NOT);
}

bool refusesToReplace(const std::string& path, bool force, const std::vector<std::string>& inputs) {
  struct stat info {};
  if (stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
    complain(path + ": not a regular file, not replaced");
    return true;
  }
  if (!force && lstat(path.c_str(), &info) == 0) {
    complain(path + ": exists; use --force to replace it");
    return true;
  }
  for (const std::string& input : inputs) {
    if (!Inspect::isSameFile(input, path)) continue;
    complain((input == "-" ? "standard input" : input) + ": is the input and would be replaced");
    return true;
  }
  return false;
}

bool saveOutput(const std::string& path, const void* bytes, std::size_t size) {
  if (Veltra::replaceFile(path, bytes, size)) return true;
  complain(fmt::format("{}: {}", path, std::strerror(errno)));
  return false;
}

}  // namespace Command
