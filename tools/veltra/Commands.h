#pragma once

#include <functional>

#include <CLI/CLI.hpp>

#include <tools/inspect/ContainerWalk.h>

#include "Output.h"

namespace Command {

/// What the chosen subcommand does; returns the exit code.
using Run = std::function<int()>;

/// What a command found out about one file.
struct FileAnswer {
  Json::Value json;                ///< the file's element of the JSON document
  std::vector<Json::Value> lines;  ///< its JSON lines
  std::vector<Inspect::Finding> findings;
};

/// Asks `answer` about each file and prints what it says: in the table format `answer` itself prints. Findings go to
/// standard error, after what was printed.
/// @return 0; 1 a file is damaged; 4 a file could not be read
int answerForFiles(const std::vector<std::string>& files, const Options& options,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer);

/// Says so when a file stands where one is to be written and must not be replaced.
bool refusesToReplace(const std::string& path, bool force);

// Each adds its subcommand to the application and sets `run` when it is chosen.
void addPack(CLI::App& app, const Options& options, Run& run);
void addInfo(CLI::App& app, const Options& options, Run& run);
void addList(CLI::App& app, const Options& options, Run& run);
void addShow(CLI::App& app, const Options& options, Run& run);
void addIds(CLI::App& app, const Options& options, Run& run);
void addRecover(CLI::App& app, const Options& options, Run& run);
void addNetprofile(CLI::App& app, const Options& options, Run& run);

}  // namespace Command
