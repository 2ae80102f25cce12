#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/Version.h>
#include <libinspect/job/ManyFiles.h>

#include "TableFile.h"

namespace {

using namespace Command;

/// The options every command has.
void addOptions(Subcommand& root, Options& options) {
  root.option("-h,--help", "", {}, "Print this help message and exit");
  root.option("--version", "", {}, "Display program version information and exit");
  root.option("-f,--format", "table|json|jsonl|csv|xlsx|sqlite",
              takeChoice<Format>(options.format, {{"table", FORMAT_TABLE},
                                                  {"json", FORMAT_JSON},
                                                  {"jsonl", FORMAT_JSONL},
                                                  {"csv", FORMAT_CSV},
                                                  {"xlsx", FORMAT_XLSX},
                                                  {"sqlite", FORMAT_SQLITE}}),
              "how answers are given; xlsx and sqlite: files of a job (default: table)");
  root.flag("--spreadsheet", options.spreadsheet,
            "CSV for a spreadsheet: units in the headings, and no text is taken for a formula");
  root.flag("-q,--quiet", options.quiet, "do not print findings; the exit code reports them");
  root.flag("-r,--recursive", options.recursive, "look into directories");
  root.option("-j,--jobs", "N", &options.jobs, "threads for many files (default: one per core)");
  root.option("--max-size", "BYTES", &options.maxSize, "skip files larger than this; also 64K, 10M, 1G");
  root.option(
      "--color", "auto|always|never",
      takeChoice<Color>(options.color, {{"auto", COLOR_AUTO}, {"always", COLOR_ALWAYS}, {"never", COLOR_NEVER}}),
      "colour the output (default: on a terminal, unless NO_COLOR is set)");
  root.option("--progress", "auto|never", takeChoice<bool>(options.progress, {{"auto", true}, {"never", false}}),
              "a progress bar on standard error, on a terminal, after one second");
}

/// Moves them into a list. One in braces is copied, and GCC 12's std::variant does not survive a copy that finds no
/// memory.
template <class... Commands>
std::vector<Subcommand> listOf(Commands... commands) {
  std::vector<Subcommand> list;
  list.reserve(sizeof...(commands));
  (list.push_back(std::move(commands)), ...);
  return list;
}

constexpr char UNWRITABLE[] = "standard output cannot be written";

/// @param cause  in the manner of errno; 0: not known
int endBy(const char* reason, int cause = 0) {
  try {
    complain(cause == 0 ? reason : std::string(reason) + ": " + std::strerror(cause));
  } catch (const std::exception&) {  // not even memory for that
    std::fputs("veltra: ", stderr);
    std::fputs(reason, stderr);
    std::fputs("\n", stderr);
  }
  return EXIT_COULD_NOT;
}

int runCommand(int argc, char** argv) {
  Options options;
  Subcommand root("veltra", "Inspect, check, recover and create the files of cabling testers.");
  addOptions(root, options);
  root.commands = listOf(infoCommand(options), listCommand(options), showCommand(options), summaryCommand(options),
                         doctorCommand(options), recoverCommand(options), jobCommand(options), reportCommand(options),
                         annotateCommand(options), extractCommand(options), diffCommand(options), packCommand(options),
                         manifestCommand(options), netprofileCommand(options), idsCommand(options),
                         typesCommand(options), completionCommand(root), helpCommand(root));
  refuseTableFormats(root, options);
  int code = EXIT_DONE;
  const Run run = parseCommandLine(root, "veltra " VELTRA_VERSION_TEXT, argc, argv, code);
  if (code == EXIT_USAGE) return code;
  setColor(options.color);
  if (options.spreadsheet && options.format != FORMAT_TABLE && options.format != FORMAT_CSV) {
    complain(isTableFormat(options.format) ? "--spreadsheet: expected -f csv or no -f, found a file of tables"
                                           : "--spreadsheet: expected -f csv or no -f, found a format for programs");
    return EXIT_USAGE;
  }
  if (options.spreadsheet) options.format = FORMAT_CSV;
  setSpreadsheet(options.spreadsheet);
  if (run) code = run();
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
  return endBy(UNWRITABLE, errno);
}

extern "C" void endBySignal(int signal) {
  Veltra::FileReplacement::removeUnfinished();
  std::signal(signal, SIG_DFL);
  raise(signal);  // delivered when this returns
}

/// Leaves no temporary file when a signal ends the program. One that is ignored stays ignored.
void handleSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    if (std::signal(signal, endBySignal) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  std::signal(SIGXFSZ, SIG_IGN);  // writing then fails, which is reported
}

/// A file that is opened must not take the place of a standard stream that is closed: it would be read as input, or
/// printed into. What stands there instead fails just as a closed one.
void occupyClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool isClosed = fcntl(stream, F_GETFD) == -1 && errno == EBADF;
    if (isClosed) (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");  // widths of characters in tables; numbers stay in the C locale
  handleSignals();
  occupyClosedStreams();
  try {
    return runCommand(argc, argv);
  } catch (const std::exception& e) {  // out of memory, or a closed standard output
    const auto* const failure = dynamic_cast<const std::system_error*>(&e);
    const bool isOutput = failure != nullptr && std::ferror(stdout) != 0;
    return isOutput ? endBy(UNWRITABLE, failure->code().value()) : endBy(Inspect::causeOf(e));
  }
}
