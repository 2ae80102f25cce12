#pragma once

#include <functional>
#include <optional>

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/job/JobFiles.h>

#include "CommandLine.h"
#include "Output.h"

namespace Command {

/// What a command found out about one file.
struct FileAnswer {
  std::string text;               ///< for the table format
  Json::Value json;               ///< the file's element of the JSON document
  std::vector<Json::Value> rows;  ///< its JSON lines and CSV rows, flat objects
  std::optional<LongList> list;   ///< in place of them, and the last member of `json`
  Inspect::Findings findings;
};

/// The files meant by paths: with -r every regular file below a directory, in order of name.
/// @param code  made worse, with a complaint, for a path that cannot be looked into
std::vector<std::string> filesOf(const std::vector<std::string>& paths, const Options& options, int& code);

/// Asks about each file, on several threads, and prints the answers in the order of the files. Nothing is held of a
/// file once it is printed.
/// @param columns   of the CSV rows; none where the command has no CSV
/// @param complain  findings go to standard error; without, the answers themselves tell them
/// @return the worst of 0; 1 a file is damaged; 3 a file has warnings or is larger than wanted; 4 a file could not be
///         read
[[nodiscard]] int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                                 const std::vector<std::string>& columns, bool complainOfFindings,
                                 const std::function<FileAnswer(const Inspect::ByteSource&)>& answer);

/// Reads the results of a job. Findings go to standard error.
/// @param code  made as bad as answerForFiles() answers
Inspect::JobFiles readJob(const std::vector<std::string>& files, const Options& options, int& code);

/// Complains of each finding.
void complainOfEach(const std::string& name, const Inspect::Findings& findings);

/// Opens the one input of a command. @return false, with a complaint: it could not be done
[[nodiscard]] bool openInput(Inspect::ByteSource& source, const std::string& path, const Options& options);

/// What a command answers that has read one input: its code, or with a complaint that the input could not be read.
[[nodiscard]] int answerAfter(const Inspect::ByteSource& source, int code);

/// A section by its number. @return none, with complaints, and `code` what the command answers
[[nodiscard]] std::optional<Inspect::SectionInfo> sectionOf(const Inspect::ByteSource& source, int number, int& code);

/// Complains of a section that a container does not have. @return the exit code
[[nodiscard]] int complainOfNoSection(const Inspect::ByteSource& source, const Inspect::ContainerReport& report,
                                      int number);

/// Says so when a file stands where one is to be written and must not be replaced.
[[nodiscard]] bool refusesToReplace(const std::string& path, bool force);

/// Says so when what is to be written would replace what is to be read.
[[nodiscard]] bool refusesToReplaceInput(const std::string& input, const std::string& output);

/// Saves what a command made, so that the old file or the new one is there at any time.
/// @return false, with a complaint; the file at `path` is then as it was
[[nodiscard]] bool saveOutput(const std::string& path, const void* bytes, std::size_t size);

// One command a file: what it is called, takes and does. The options are those every command has.
Subcommand annotateCommand(const Options& options);
Subcommand diffCommand(const Options& options);
Subcommand doctorCommand(const Options& options);
Subcommand extractCommand(const Options& options);
Subcommand idsCommand(const Options& options);
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
/// @param root  all commands, when it is run
Subcommand completionCommand(const Subcommand& root);

}  // namespace Command
