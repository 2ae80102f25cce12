#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <thread>

#include <fmt/format.h>

#include <tools/inspect/FileSummary.h>

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
  std::string error;
};

/// Answers for files[begin] to files[end - 1], each thread taking every jobs-th of them.
std::vector<Outcome> answerBatch(const std::vector<std::string>& files, std::size_t begin, std::size_t end,
                                 unsigned jobs, const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  std::vector<Outcome> outcomes(end - begin);
  const auto work = [&](unsigned first) {
    Inspect::ByteSource source;
    for (std::size_t i = first; i < outcomes.size(); i += jobs) {
      try {
        if (!source.open(files[begin + i], outcomes[i].error)) continue;
        outcomes[i].answer = answer(source);
        if (source.hasFailed()) outcomes[i].error = source.name() + ": read error";
      } catch (const std::exception& e) {  // out of memory: it must not end the other threads
        outcomes[i].error = files[begin + i] + ": " + e.what();
      }
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < jobs; ++i) threads.emplace_back(work, i);
  work(0);
  for (std::thread& thread : threads) thread.join();
  return outcomes;
}

/// Prints answers one after the other; a JSON document grows as they come.
class Printer {
 public:
  Printer(const Options& options, const std::vector<std::string>& columns) : _options(options), _columns(columns) {
    if (options.format == FORMAT_JSON) fmt::print("{{\n\"schema\" : {},\n\"files\" : [", SCHEMA);
    if (options.format == FORMAT_CSV) printCsvHeader(columns);
  }
  void print(const FileAnswer& answer) {
    switch (_options.format) {
      case FORMAT_TABLE:
        fmt::print("{}", answer.text);
        break;
      case FORMAT_JSON:
        fmt::print("{}\n", _first ? "" : ",");
        printWithLists(answer.json, answer.list ? std::vector<LongList>{*answer.list} : std::vector<LongList>(), true);
        break;
      case FORMAT_JSONL:
      case FORMAT_CSV:
        for (const Json::Value& row : answer.rows) printRow(row);
        for (std::size_t i = 0; answer.list && i < answer.list->size; ++i) {
          Json::Value row = answer.list->element(i);
          row["file"] = answer.json["file"];
          printRow(row);
        }
        break;
    }
    _first = false;
  }
  void finish() const {
    if (_options.format == FORMAT_JSON) fmt::print("\n]\n}}\n");
  }

 private:
  void printRow(const Json::Value& row) const {
    if (_options.format == FORMAT_JSONL) {
      printJsonLine(row);
    } else {
      printCsvRow(row, _columns);
    }
  }

  const Options& _options;
  const std::vector<std::string>& _columns;
  bool _first = true;
};

int codeOf(const std::vector<Inspect::Finding>& findings, bool warningsCount) {
  int code = EXIT_DONE;
  for (const Inspect::Finding& finding : findings) {
    if (Inspect::isDamage(finding.code)) return EXIT_NO;
    if (warningsCount) code = EXIT_WITH_LOSS;
  }
  return code;
}

}  // namespace

bool filesOf(const std::vector<std::string>& paths, const Options& options, std::vector<std::string>& files) {
  bool ok = true;
  for (const std::string& path : paths) {
    std::error_code unreadable;
    if (options.recursive && fs::is_directory(path, unreadable)) {
      ok = filesBelow(path, files) && ok;
    } else {
      files.push_back(path);
    }
  }
  return ok;
}

int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                   const std::vector<std::string>& columns, bool complainOfFindings,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  constexpr std::size_t FILES_A_THREAD = 64;
  std::vector<std::string> files;
  int code = filesOf(paths, options, files) ? EXIT_DONE : EXIT_COULD_NOT;
  const unsigned cores = options.jobs > 0 ? options.jobs : std::max(1u, std::thread::hardware_concurrency());
  const auto jobs = static_cast<unsigned>(std::min<std::size_t>(cores, std::max<std::size_t>(files.size(), 1)));
  Printer printer(options, columns);
  for (std::size_t begin = 0; begin < files.size(); begin += jobs * FILES_A_THREAD) {
    const std::size_t end = std::min(files.size(), begin + jobs * FILES_A_THREAD);
    const std::vector<Outcome> outcomes = answerBatch(files, begin, end, jobs, answer);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
      const std::vector<Inspect::Finding>& findings = outcomes[i].answer.findings;
      if (!outcomes[i].error.empty()) {
        complain(outcomes[i].error);
        code = worse(code, EXIT_COULD_NOT);
        continue;
      }
      printer.print(outcomes[i].answer);
      std::fflush(stdout);
      code = worse(code, codeOf(findings, !complainOfFindings));
      if (!complainOfFindings || options.quiet) continue;
      const std::string name = files[begin + i] == "-" ? "standard input" : files[begin + i];
      for (const Inspect::Finding& finding : findings) complain(describe(name, finding));
    }
  }
  printer.finish();
  return code;
}

bool refusesToReplace(const std::string& path, bool force) {
  struct stat info {};
  if (force || lstat(path.c_str(), &info) != 0) return false;
  complain(path + ": exists; --force replaces it");
  return true;
}

}  // namespace Command
