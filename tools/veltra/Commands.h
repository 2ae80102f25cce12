#pragma once

#include <functional>
#include <optional>

#include <CLI/CLI.hpp>

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/job/ResultRows.h>

#include "Output.h"

namespace Command {

/// What the chosen subcommand does; returns the exit code.
using Run = std::function<int()>;

/// What a command found out about one file.
struct FileAnswer {
  std::string text;               ///< for the table format
  Json::Value json;               ///< the file's element of the JSON document
  std::vector<Json::Value> rows;  ///< its JSON lines and CSV rows, flat objects
  std::optional<LongList> list;   ///< in place of them, and the last member of `json`
  Inspect::Findings findings;
};

/// The files meant by paths: with -r every regular file below a directory, in order of name.
/// @return false, with a complaint, for a path that cannot be looked into; the others are there all the same
bool filesOf(const std::vector<std::string>& paths, const Options& options, std::vector<std::string>& files);

/// Asks about each file, on several threads, and prints the answers in the order of the files. Nothing is held of a
/// file once it is printed.
/// @param columns   of the CSV rows; none where the command has no CSV
/// @param complain  findings go to standard error; without, the answers themselves tell them
/// @return the worst of 0; 1 a file is damaged; 3 a file has warnings or is larger than wanted; 4 a file could not be
///         read
int answerForFiles(const std::vector<std::string>& paths, const Options& options,
                   const std::vector<std::string>& columns, bool complainOfFindings,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer);

/// Reads the summary of each result file, in the order of their IDs. Findings go to standard error.
/// @param onFile  told each file that could be read, one at a time and in no order
/// @return as answerForFiles()
int readResults(const std::vector<std::string>& paths, const Options& options, std::vector<Inspect::ResultRow>& rows,
                const std::function<void(const Inspect::FileSummary&)>& onFile = {});

/// 0 each expected ID has one result; 1 IDs are missing or foreign; 3 one has two results.
int codeOf(const Inspect::Coverage& coverage);

/// Complains of each finding.
void complainOfEach(const std::string& name, const Inspect::Findings& findings);

/// Opens the one input of a command. @return false, with a complaint: it could not be done
bool openInput(Inspect::ByteSource& source, const std::string& path, const Options& options);

/// What a command answers that has read one input: its code, or with a complaint that the input could not be read.
int answerAfter(const Inspect::ByteSource& source, int code);

/// A section by its number. @return none, with complaints, and `code` what the command answers
std::optional<Inspect::SectionInfo> sectionOf(const Inspect::ByteSource& source, int number, int& code);

/// Complains of a section that a container does not have. @return the exit code
int complainOfNoSection(const Inspect::ByteSource& source, const Inspect::ContainerReport& report, int number);

/// Says so when a file stands where one is to be written and must not be replaced.
bool refusesToReplace(const std::string& path, bool force);

/// Says so when what is to be written would replace what is to be read.
bool refusesToReplaceInput(const std::string& input, const std::string& output);

/// Saves what a command made, so that the old file or the new one is there at any time.
/// @return false, with a complaint; the file at `path` is then as it was
bool saveOutput(const std::string& path, const void* bytes, std::size_t size);

// Each adds its subcommand to the application and sets `run` when it is chosen.
void addPack(CLI::App& app, const Options& options, Run& run);
void addInfo(CLI::App& app, const Options& options, Run& run);
void addList(CLI::App& app, const Options& options, Run& run);
void addShow(CLI::App& app, const Options& options, Run& run);
void addIds(CLI::App& app, const Options& options, Run& run);
void addAnnotate(CLI::App& app, const Options& options, Run& run);
void addCompletion(CLI::App& app, const Options& options, Run& run);
void addDiff(CLI::App& app, const Options& options, Run& run);
void addExtract(CLI::App& app, const Options& options, Run& run);
void addSummary(CLI::App& app, const Options& options, Run& run);
void addReport(CLI::App& app, const Options& options, Run& run);
void addTypes(CLI::App& app, const Options& options, Run& run);
void addDoctor(CLI::App& app, const Options& options, Run& run);
void addRecover(CLI::App& app, const Options& options, Run& run);
void addManifest(CLI::App& app, const Options& options, Run& run);
void addNetprofile(CLI::App& app, const Options& options, Run& run);

}  // namespace Command
