#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <thread>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/records/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

namespace fs = std::filesystem;

bool filesBelow(const std::string& directory, std::vector<std::string>& files) {
  std::error_code error;
  std::vector<std::string> found;
  fs::recursive_directory_iterator entry(directory, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code unreadable;
    if (entry->is_regular_file(unreadable)) found.push_back(entry->path().string());
  }
  std::sort(found.begin(), found.end());
  files.insert(files.end(), found.begin(), found.end());
  if (error) complain(fmt::format("{}: {}", directory, error.message()));
  return !error;
}

/// What one file gave, or why it could not be read.
struct Outcome {
  FileAnswer answer;
  int code = EXIT_DONE;
  std::string error;
};

uint64_t sizeOf(const std::vector<std::string>& files) {
  uint64_t bytes = 0;
  std::error_code unknown;
  for (const std::string& file : files) {
    const std::uintmax_t size = fs::file_size(file, unknown);
    if (!unknown) bytes += size;
  }
  return bytes;
}

void answerFor(const std::string& file, Inspect::ByteSource& source,
               const std::function<FileAnswer(const Inspect::ByteSource&)>& answer, Outcome& outcome) {
  try {
    if (!source.open(file, outcome.error)) {
      outcome.code = source.isOverLimit() ? EXIT_WITH_LOSS : EXIT_COULD_NOT;
      return;
    }
    outcome.answer = answer(source);
    if (source.hasFailed()) outcome.error = source.name() + ": read error";
  } catch (const std::exception& e) {  // out of memory: it must not end the other threads
    outcome.error = file + ": " + e.what();
  }
  if (!outcome.error.empty()) outcome.code = EXIT_COULD_NOT;
}

/// Answers for files[begin] to files[end - 1], each thread taking every jobs-th of them.
std::vector<Outcome> answerBatch(const std::vector<std::string>& files, std::size_t begin, std::size_t end,
                                 unsigned jobs, const Options& options, Progress& progress,
                                 const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  std::vector<Outcome> outcomes(end - begin);
  const auto work = [&](unsigned first) {
    Inspect::ByteSource source;
    uint64_t read = 0;
    source.setLimit(options.maxSize);
    source.onRead([&](std::size_t bytes) {
      read += bytes;
      progress.advance(bytes);
    });
    for (std::size_t i = first; i < outcomes.size(); i += jobs) {
      read = 0;
      answerFor(files[begin + i], source, answer, outcomes[i]);
      if (source.size() > read) progress.advance(source.size() - read);  // what need not be read is done, too
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < jobs; ++i) threads.emplace_back(work, i);
  work(0);
  for (std::thread& thread : threads) thread.join();
  return outcomes;
}

int codeOf(const Inspect::Findings& findings) {
  if (findings.hasDamage()) return EXIT_NO;
  return findings.empty() ? EXIT_DONE : EXIT_WITH_LOSS;
}

}  // namespace

bool filesOf(const std::vector<std::string>& paths, const Options& options, std::vector<std::string>& files) {
  bool ok = true;
  for (const std::string& path : paths) {
    std::error_code unreadable;
    if (!fs::is_directory(path, unreadable)) {
      files.push_back(path);
    } else if (options.recursive) {
      ok = filesBelow(path, files) && ok;
    } else {
      complain(path + ": is a directory; -r looks into it");
      ok = false;
    }
  }
  return ok;
}

int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                   const std::vector<std::string>& columns, bool complainOfFindings,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  constexpr std::size_t FILES_A_THREAD = 16;  // a hostile file may have a thousand findings
  std::vector<std::string> files;
  int code = filesOf(paths, options, files) ? EXIT_DONE : EXIT_COULD_NOT;
  const unsigned cores = options.jobs > 0 ? options.jobs : std::max(1u, std::thread::hardware_concurrency());
  const auto jobs = static_cast<unsigned>(std::min<std::size_t>(cores, std::max<std::size_t>(files.size(), 1)));
  Progress progress(options.progress);
  if (progress.active()) progress.expect(sizeOf(files));
  AnswerStream answers(options, "files", columns);
  for (std::size_t begin = 0; begin < files.size(); begin += jobs * FILES_A_THREAD) {
    const std::size_t end = std::min(files.size(), begin + jobs * FILES_A_THREAD);
    const std::vector<Outcome> outcomes = answerBatch(files, begin, end, jobs, options, progress, answer);
    progress.hide();
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
      const Inspect::Findings& findings = outcomes[i].answer.findings;
      if (outcomes[i].code != EXIT_DONE) {
        if (outcomes[i].code == EXIT_COULD_NOT || !options.quiet) complain(outcomes[i].error);
        code = worse(code, outcomes[i].code);
        continue;
      }
      const FileAnswer& given = outcomes[i].answer;
      answers.print(given.text, given.json, given.rows, given.list);
      (void)std::fflush(stdout);  // whether all was written is asked at the end
      code = worse(code, codeOf(findings));
      if (!complainOfFindings || options.quiet) continue;
      complainOfEach(files[begin + i] == "-" ? "standard input" : files[begin + i], findings);
    }
  }
  answers.finish();
  return code;
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
  complain(fmt::format("{}: no section {}; it has {}", source.name(), number,
                       report.sections == 0 ? "none" : fmt::format("0 to {}", report.sections - 1)));
  return answerAfter(source, report.damaged() ? EXIT_NO : EXIT_COULD_NOT);
}

bool refusesToReplace(const std::string& path, bool force) {
  struct stat info {};
  if (stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
    complain(path + ": found something else than a file, which is not replaced");
    return true;
  }
  if (force || lstat(path.c_str(), &info) != 0) return false;
  complain(path + ": exists; --force replaces it");
  return true;
}

bool refusesToReplaceInput(const std::string& input, const std::string& output) {
  std::error_code missing;
  if (!fs::equivalent(input, output, missing)) return false;
  complain(input + ": is to be read, and would be replaced");
  return true;
}

bool saveOutput(const std::string& path, const void* bytes, std::size_t size) {
  if (Veltra::replaceFile(path, bytes, size)) return true;
  complain(fmt::format("{}: {}", path, std::strerror(errno)));
  return false;
}

}  // namespace Command
