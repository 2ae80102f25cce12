#pragma once

#include <functional>
#include <optional>

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/job/Job.h>

#include "CommandLine.h"
#include "Output.h"

namespace Command {

constexpr char REVEAL_HELP[] = "show secrets as they are";
constexpr char FORCE_HELP[] = "replace an existing file";

/// What a command found in one file.
struct FileAnswer {
  std::string text;               ///< for the table format
  Json::Value json;               ///< the file's element of the JSON document
  std::vector<Json::Value> rows;  ///< its JSON lines and CSV rows, flat objects
  std::optional<LongList> list;   ///< replaces the rows, and is the last member of `json`
  std::function<void()> print;    ///< for the table format: prints what follows `text` and is too long to hold
  Inspect::Findings findings;
  std::string noContainer;    ///< of a file that is none: why; it has no findings then
  uint64_t deepFindings = 0;  ///< how many of the findings a deep examination alone has found
};

/// The files of paths: with -r every regular file below a directory, in order of name, but for its job.json.
/// @param code        made worse, with a complaint, for a path that cannot be examined
/// @param passedOver  receives how much else is in the directories
std::vector<std::string> filesOf(const std::vector<std::string>& paths, const Options& options, int& code,
                                 std::size_t& passedOver);

/// True, with a complaint, when there are no files to make an answer of.
[[nodiscard]] bool complainsOfNoFiles(const std::vector<std::string>& paths, const std::vector<std::string>& files);

/// True, with a complaint, when nothing but files that are no containers, or could not be read, were found.
[[nodiscard]] bool complainsOfNoResults(const std::vector<std::string>& paths, const Inspect::JobFiles& job);

/// The option that names IDs of a job, which may be given several times.
Argument& addExpect(Subcommand& command, std::vector<std::string>& expected);
/// Adds the IDs of that option. @return false, with a complaint, for wrong usage
[[nodiscard]] bool takeExpected(const std::vector<std::string>& expected, Inspect::ExpectedIds& ids);

/// Tells of files in folders that are no containers.
void tellOfOthers(uint64_t others, const Options& options);

/// Calls `answer` for each file, on several threads, and prints the answers in the order of the files. Nothing of a
/// file is kept after it is printed.
/// @param columns  of the CSV rows; none if the command has no CSV
/// @param complainOfFindings  print findings on standard error; otherwise the answers themselves contain them
/// @return the worst of 0; 1 a file is damaged; 3 a file has warnings or is larger than --max-size; 4 a file could
///         not be read
[[nodiscard]] int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                                 const std::vector<std::string>& columns, bool complainOfFindings,
                                 const std::function<FileAnswer(const Inspect::ByteSource&)>& answer);

/// The same for commands that judge each file. A file of a folder that is no container is only counted; one that was
/// named is complained of, and the code is 4.
/// @param showsOthers  the answers of such files are printed all the same
/// @param answer       makes the answer but for its findings
[[nodiscard]] int answerForJudged(
    const std::vector<std::string>& paths, const Options& options, const std::vector<std::string>& columns,
    bool complainOfFindings, Inspect::Examination examination, bool showsOthers,
    const std::function<FileAnswer(const Inspect::JudgedFile&, Inspect::OutputPlace)>& answer);

/// Reading options from the command line, with a progress bar.
Inspect::ReadingOptions readingOf(const Options& options, Progress& progress);
/// The exit code for one file of many; complains if it could not be read.
/// @param unread  the code then
[[nodiscard]] int codeOfFile(const Inspect::ReadOutcome& outcome, const Inspect::Findings& findings,
                             const Options& options, int unread = EXIT_COULD_NOT);

/// Reads the results of a job. Findings go to standard error.
/// @param code    made at least as bad as the result of answerForFiles() would be
/// @param unread  the exit code for a file that could not be read
/// @param onRow   if given, receives the results in the order of the files, and they are not held
Inspect::JobFiles readJob(const Inspect::FileRun& run, const Options& options, int& code, int unread = EXIT_COULD_NOT,
                          const Inspect::OnRow& onRow = {});

/// What the commands that speak of a job are told of it.
struct JobArguments {
  std::vector<std::string> paths;
  std::string descriptionFile;
  std::vector<std::string> expected;
  Inspect::CountPolicy policy = Inspect::CountPolicy::LATEST;
};
/// The arguments of each of these commands: paths, --job, --expect and --count.
void addJobArguments(Subcommand& command, JobArguments& args);
/// Reads the description of a job and its expected IDs, from --job or else from the folder that is named, if it has
/// one.
/// @return false, with a complaint, and the exit code in `code`
[[nodiscard]] bool describeJob(const JobArguments& args, Inspect::Job& job, int& code);
/// Reads the results, too, of all files in folders.
/// @param code    EXIT_COULD_NOT if not all files could be read
/// @param choose  if given, is shown all files before they are read, and may take some out, or return false to end it
/// @return false if `choose` ended it
bool readWholeJob(const JobArguments& args, const Options& options, Inspect::Job& job, int& code,
                  const std::function<bool(std::vector<std::string>& files)>& choose = {});

/// Complains of each finding.
void complainOfEach(const std::string& name, const Inspect::Findings& findings);

/// Opens the one input of a command. @return false, with a complaint, when that failed
[[nodiscard]] bool openInput(Inspect::ByteSource& source, const std::string& path, const Options& options);

/// The exit code of a command after reading one input: `code`, or a failure with a complaint if a read failed.
[[nodiscard]] int answerAfter(const Inspect::ByteSource& source, int code);

/// A section by its number. @return none, with complaints, and the exit code in `code`
[[nodiscard]] std::optional<Inspect::SectionInfo> sectionOf(const Inspect::ByteSource& source, int number, int& code);

/// True, with a complaint, when an input is no container, nor what may be left of one: the command ends with
/// EXIT_COULD_NOT.
[[nodiscard]] bool complainsOfOther(const Inspect::ByteSource& source);

/// Complains of a section that a container does not have. @return the exit code
[[nodiscard]] int complainOfNoSection(const Inspect::ByteSource& source, const Inspect::ContainerReport& report,
                                      int number);

/// True, with a complaint, when the path already has a file that must not be replaced, or, forced or not, one of the
/// inputs of the command, whatever its name.
[[nodiscard]] bool refusesToReplace(const std::string& path, bool force, const std::vector<std::string>& inputs);

/// Saves the output of a command, so that the whole old or the whole new file exists at any time.
/// @return false, with a complaint; the file at `path` is then unchanged
[[nodiscard]] bool saveOutput(const std::string& path, const void* bytes, std::size_t size);

// One command per file: its name, arguments and action. `options` are those that every command has.
Subcommand annotateCommand(const Options& options);
Subcommand diffCommand(const Options& options);
Subcommand doctorCommand(const Options& options);
Subcommand extractCommand(const Options& options);
Subcommand idsCommand(const Options& options);
Subcommand jobCommand(const Options& options);
Subcommand infoCommand(const Options& options);
Subcommand listCommand(const Options& options);
Subcommand manifestCommand(const Options& options);
Subcommand netprofileCommand(const Options& options);
Subcommand packCommand(const Options& options);
Subcommand recoverCommand(const Options& options);
Subcommand reportCommand(const Options& options);
Subcommand showCommand(const Options& options);
Subcommand summaryCommand(const Options& options);
Subcommand typesCommand(const Options& options);
// With `root`, all commands, which is read when the command is run.
Subcommand completionCommand(const Subcommand& root);
Subcommand helpCommand(const Subcommand& root);

}  // namespace Command
