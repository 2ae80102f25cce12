#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>

#include "Commands.h"

namespace Command {

Inspect::ReadingOptions readingOf(const Options& options, Progress& progress) {
  Inspect::ReadingOptions reading;
  reading.threads = options.jobs;
  reading.maxSize = options.maxSize;
  if (!progress.active()) return reading;
  reading.onBegin = [&progress](std::size_t files, uint64_t bytes) { progress.expect(bytes, files); };
  reading.onRead = [&progress](uint64_t bytes) { progress.advance(bytes); };
  reading.onFile = [&progress] { progress.finishFile(); };
  return reading;
}

int codeOfFile(const Inspect::ReadOutcome& outcome, const Inspect::Findings& findings, const Options& options,
               int unread) {
  if (outcome.state == Inspect::ReadOutcome::WAS_READ) return codeOf(findings);
  const bool isLeftOut = outcome.state == Inspect::ReadOutcome::LEFT_OUT;
  if (!isLeftOut || !options.quiet) complain(outcome.error);
  if (outcome.state == Inspect::ReadOutcome::OUT_OF_MEMORY) return EXIT_COULD_NOT;
  return isLeftOut ? EXIT_WITH_LOSS : unread;
}

namespace {

/// The exit code for a file that is no container: complains of one that was named, counts one of a folder.
int codeOfOther(const Inspect::FileRun& run, const std::string& file, const std::string& why, uint64_t& others) {
  if (run.isNamed(file)) {
    complain(why);
    return EXIT_COULD_NOT;
  }
  ++others;
  return EXIT_DONE;
}

void complainOfFile(const std::string& file, const Inspect::Findings& findings, const Options& options) {
  if (!options.quiet) complainOfEach(Inspect::inputName(file), findings);
}

}  // namespace

std::vector<std::string> filesOf(const std::vector<std::string>& paths, const Options& options, int& code,
                                 std::size_t& passedOver) {
  std::vector<std::string> faults;
  std::vector<std::string> files = Inspect::filesWithoutDescriptions(paths, options.recursive, faults, passedOver);
  for (const std::string& fault : faults) complain(fault);
  if (!faults.empty()) code = worse(code, EXIT_COULD_NOT);
  return files;
}

bool complainsOfNoFiles(const std::vector<std::string>& paths, const std::vector<std::string>& files) {
  if (files.empty()) complain(fmt::format("{}: no files", fmt::join(paths, ", ")));
  return files.empty();
}

bool complainsOfNoResults(const std::vector<std::string>& paths, const Inspect::JobFiles& job) {
  if (!job.isEmpty()) return false;
  complain(fmt::format("{}: no results", fmt::join(paths, ", ")));
  return true;
}

Argument& addExpect(Subcommand& command, std::vector<std::string>& expected) {
  return command
      .option("--expect", "FIRST..LAST", &expected,
              "IDs of the job, or one ID; tells which are missing, damaged, tested twice or not expected")
      .repeated();
}

bool takeExpected(const std::vector<std::string>& expected, Inspect::ExpectedIds& ids) {
  for (const std::string& range : expected) {
    std::string error;
    if (ids.add(range, error)) continue;
    complain(error);
    return false;
  }
  return true;
}

void tellOfOthers(uint64_t others, const Options& options) {
  if (others == 0 || options.quiet) return;
  complain(others == 1 ? "1 other file, which is no container"
                       : fmt::format("{} other files, which are no containers", others),
           Tone::PLAIN);
}

namespace {

using AnswerOf = std::function<FileAnswer(const Inspect::ByteSource&, const Inspect::FileRun&)>;

int answerForEach(const std::vector<std::string>& paths, const Options& options,
                  const std::vector<std::string>& columns, bool complainOfFindings, bool showsOthers,
                  const std::function<Json::Value(uint64_t others, uint64_t deep)>& totals, const AnswerOf& answerOf) {
  int code = EXIT_DONE;
  std::size_t passedOver = 0;
  std::vector<std::string> files = filesOf(paths, options, code, passedOver);
  const Inspect::FileRun run(std::move(files), paths, options.maxSize, passedOver);
  Progress progress(options.progress);
  AnswerStream answers(options, "files", columns);
  uint64_t others = passedOver, deep = 0;
  const auto answer = [&](const Inspect::ByteSource& source) { return answerOf(source, run); };
  const auto tell = [&](const std::string& file, const Inspect::ReadOutcome& outcome, std::optional<FileAnswer> given) {
    code = worse(code, codeOfFile(outcome, given ? given->findings : Inspect::Findings(), options));
    if (outcome.state != Inspect::ReadOutcome::WAS_READ) return;
    const bool isOther = !given->noContainer.empty();
    deep += given->deepFindings;
    if (!isOther || (showsOthers && run.isNamed(file))) {
      answers.print(given->text, given->json, given->rows, given->list);
      if (given->print && options.format == FORMAT_TABLE) {
        const Room room(stdout);
        given->print();
      }
    }
    (void)std::fflush(stdout);  // write errors are checked at the end
    if (isOther) code = worse(code, codeOfOther(run, file, given->noContainer, others));
    if (complainOfFindings) complainOfFile(file, given->findings, options);
  };
  Inspect::askEach<FileAnswer>(run.files(), readingOf(options, progress), answer, tell);
  answers.finish(totals ? totals(others, deep) : Json::Value());
  (void)std::fflush(stdout);
  tellOfOthers(others, options);
  if (deep > 0 && !options.quiet && !complainOfFindings) {
    complain(deep == 1 ? "1 finding was added by --deep" : fmt::format("{} findings were added by --deep", deep),
             Tone::PLAIN);
  }
  return code;
}

}  // namespace

int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                   const std::vector<std::string>& columns, bool complainOfFindings,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  return answerForEach(paths, options, columns, complainOfFindings, false, {},
                       [&answer](const Inspect::ByteSource& source, const Inspect::FileRun& run) {
                         FileAnswer given = answer(source);
                         if (given.findings.empty() || given.findings.begin()->code != Inspect::E02_NO_FILE_HEADER)
                           return given;
                         const Inspect::JudgedFile file =
                             judge(source, Inspect::Examination::QUICK,
                                   [&run](const std::string& path) { return run.isNamedAsResult(path); });
                         if (file.state != Inspect::FileState::OTHER) return given;
                         given.findings = {};
                         given.noContainer = noContainerText(file);
                         return given;
                       });
}

int answerForJudged(const std::vector<std::string>& paths, const Options& options,
                    const std::vector<std::string>& columns, bool complainOfFindings, Inspect::Examination examination,
                    bool showsOthers,
                    const std::function<FileAnswer(const Inspect::JudgedFile&, Inspect::OutputPlace)>& answer) {
  const bool isDeep = examination == Inspect::Examination::DEEP;
  const auto totals = [isDeep](uint64_t others, uint64_t deep) {
    Json::Value json(Json::objectValue);
    json["otherFiles"] = static_cast<Json::UInt64>(others);
    if (isDeep) json["deepFindings"] = static_cast<Json::UInt64>(deep);
    return json;
  };
  return answerForEach(
      paths, options, columns, complainOfFindings, showsOthers, totals,
      [&](const Inspect::ByteSource& source, const Inspect::FileRun& run) {
        const Inspect::JudgedFile file =
            judge(source, examination, [&run](const std::string& path) { return run.isNamedAsResult(path); });
        const bool isBeside = !file.report.findings.empty() && run.sharesName(source.path());
        FileAnswer given =
            answer(file, isBeside ? Inspect::OutputPlace::BESIDE_INPUT : Inspect::OutputPlace::CURRENT_FOLDER);
        if (file.state == Inspect::FileState::OTHER) {
          given.noContainer = noContainerText(file);
        } else {
          given.findings = file.report.findings;
          given.deepFindings = file.deepFindings;
        }
        return given;
      });
}

Inspect::JobFiles readJob(const Inspect::FileRun& run, const Options& options, int& code, int unread,
                          const Inspect::OnRow& onRow) {
  Progress progress(options.progress);
  uint64_t others = run.passedOver();
  const auto tell = [&](const std::string& name, const Inspect::ReadOutcome& outcome, const Inspect::JudgedFile* file) {
    const bool isOther = file != nullptr && file->state == Inspect::FileState::OTHER;
    const Inspect::Findings findings = file != nullptr && !isOther ? file->report.findings : Inspect::Findings();
    code = worse(code, codeOfFile(outcome, findings, options, unread));
    if (outcome.state != Inspect::ReadOutcome::WAS_READ) return;
    if (isOther) code = worse(code, codeOfOther(run, name, noContainerText(*file), others));
    complainOfFile(name, findings, options);
  };
  Inspect::JobFiles job = Inspect::readJob(run, readingOf(options, progress), tell, onRow);
  tellOfOthers(others, options);
  return job;
}

void addJobArguments(Subcommand& command, JobArguments& args) {
  command.place("PATH", "PATH...", &args.paths, "the folder of the job, or its files").required();
  command.option("--job", "FILE", &args.descriptionFile,
                 "the description of the job (default: job.json in the folder)");
  command
      .option("--expect", "FIRST..LAST", &args.expected,
              "IDs of the job beside those of its description, or one ID; may be given several times")
      .repeated();
  command.option(
      "--count", "latest|all",
      takeChoice<Inspect::CountPolicy>(args.policy,
                                       {{"latest", Inspect::CountPolicy::LATEST}, {"all", Inspect::CountPolicy::ALL}}),
      "which results of one ID count: latest leaves out those that a later one stands for (default: latest)");
}

bool describeJob(const JobArguments& args, Inspect::Job& job, int& code) {
  job.descriptionFile = args.descriptionFile;
  if (job.descriptionFile.empty()) {
    const std::vector<std::string> found = Inspect::descriptionsIn(args.paths);
    if (found.size() > 1) {
      complain(fmt::format("expected one job, found {}; say which with --job", fmt::join(found, " and ")));
      code = EXIT_USAGE;
      return false;
    }
    if (!found.empty()) job.descriptionFile = found.front();
  }
  std::string error;
  if (!job.descriptionFile.empty() && !readJobDescription(job.descriptionFile, job.description, job.expected, error)) {
    complain(error);
    code = EXIT_COULD_NOT;
    return false;
  }
  if (takeExpected(args.expected, job.expected)) return true;
  code = EXIT_USAGE;
  return false;
}

bool readWholeJob(const JobArguments& args, const Options& options, Inspect::Job& job, int& code,
                  const std::function<bool(std::vector<std::string>& files)>& choose) {
  std::size_t passedOver = 0;
  int reading = EXIT_DONE;
  std::vector<std::string> faults;
  std::vector<std::string> files = Inspect::filesOf(job, args.paths, faults, passedOver);
  for (const std::string& fault : faults) complain(fault);
  if (!faults.empty()) reading = EXIT_COULD_NOT;
  if (choose && !choose(files)) return false;
  const Inspect::FileRun run(std::move(files), args.paths, options.maxSize, passedOver);
  job.files = readJob(run, options, reading);
  // What is damaged is known of the links; only what nobody could look at makes the answer doubtful.
  if (reading == EXIT_COULD_NOT) code = worse(code, EXIT_COULD_NOT);
  if (!job.files.leftOut.empty()) code = worse(code, EXIT_WITH_LOSS);
  job.settle(args.policy);
  return true;
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

bool complainsOfOther(const Inspect::ByteSource& source) {
  const Inspect::JudgedFile file = Inspect::judge(source, Inspect::Examination::QUICK);
  if (file.state != Inspect::FileState::OTHER) return false;
  complain(noContainerText(file));
  return true;
}

std::optional<Inspect::SectionInfo> sectionOf(const Inspect::ByteSource& source, int number, int& code) {
  Inspect::ContainerReport report;
  std::optional<Inspect::SectionInfo> section = findSection(source, number, report);
  if (section) return section;
  if (complainsOfOther(source)) {
    code = answerAfter(source, EXIT_COULD_NOT);
    return section;
  }
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
  const std::string refusal = Inspect::refusalToReplace(path, force, inputs);
  if (refusal.empty()) return false;
  complain(refusal == Inspect::EXISTS ? fmt::format("{}: {}; use --force to replace it", path, refusal) : refusal);
  return true;
}

bool saveOutput(const std::string& path, const void* bytes, std::size_t size) {
  if (Veltra::replaceFile(path, bytes, size)) return true;
  complain(fmt::format("{}: {}", path, std::strerror(errno)));
  return false;
}

}  // namespace Command
