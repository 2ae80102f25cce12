#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <libinspect/container/ByteSource.h>

namespace Inspect {

/// How to read many files.
struct ReadingOptions {
  unsigned threads = 0;  ///< 0: one per core
  uint64_t maxSize = 0;  ///< larger files are skipped; 0: no limit
  /// Receives the number of files and the bytes of all. May be empty, like the next two.
  std::function<void(std::size_t files, uint64_t bytes)> onBegin;
  std::function<void(uint64_t bytes)> onRead;  ///< receives the bytes read since the last call; from any thread
  std::function<void()> onFile;                ///< called after each file that was read; from any thread
};

/// Outcome of reading one file.
struct ReadOutcome {
  enum State { WAS_READ, LEFT_OUT, COULD_NOT, OUT_OF_MEMORY };
  State state = WAS_READ;
  std::string error;  ///< why it was not read, or why it was skipped
};

/// What an exception says to people: "out of memory" for that of the library and for JsonCpp's.
const char* causeOf(const std::exception& exception);

/// What is in folders and is neither file nor folder.
struct PassedOver {
  std::vector<std::string> linkedFolders;  ///< links to folders, which are not followed
  std::vector<std::string> others;         ///< such as FIFOs and links that lead nowhere
};

/// The files of paths, in the order of the paths: for a directory every regular file below it, in order of name.
/// @param faults      receives a line for each path that cannot be examined
/// @param passedOver  receives what else is in the directories, in order of name
std::vector<std::string> filesOf(const std::vector<std::string>& paths, bool recursive,
                                 std::vector<std::string>& faults, PassedOver& passedOver);
/// @param others  receives only how much else is there, links to folders not counted
std::vector<std::string> filesOf(const std::vector<std::string>& paths, bool recursive,
                                 std::vector<std::string>& faults, std::size_t& others);

/// How many bytes files have, as far as known.
uint64_t bytesOf(const std::vector<std::string>& files);

/// How many files are read before the outcome of the first of them is taken. It may change with the machine: ask once.
std::size_t readAhead(const ReadingOptions& options, std::size_t files);

/// Receives a file that was opened, and its place below the number of places: it is that of no other file until its
/// outcome was taken. Called from any thread; memory that runs out in it is an outcome.
using OnOpened = std::function<void(std::size_t place, const ByteSource&)>;
/// Takes the outcome of a file, by its number and its place; in the order of the files, from the calling thread.
using OnOutcome = std::function<void(std::size_t file, std::size_t place, const ReadOutcome&)>;

/// Opens files on several threads, or on fewer where the system gives no more.
/// @param places  files that are read ahead of those whose outcome was taken; at least one
/// @throw std::bad_alloc if there is no memory to read with; what `onOutcome` throws
void readInOrder(const std::vector<std::string>& files, const ReadingOptions& options, std::size_t places,
                 const OnOpened& onOpened, const OnOutcome& onOutcome);

/// Calls `ask` for each file, on several threads, and `tell` with the answers in the order of the files. Nothing of a
/// file is kept after that.
/// @param ask   called from any thread; its answer is reported even if the file could not be read to its end
/// @param tell  called from this thread; no answer where the file could not be opened, or memory ran out
template <class Answer>
void askEach(const std::vector<std::string>& files, const ReadingOptions& options,
             const std::function<Answer(const ByteSource&)>& ask,
             const std::function<void(const std::string& file, const ReadOutcome&, std::optional<Answer>)>& tell) {
  if (options.onBegin) options.onBegin(files.size(), bytesOf(files));
  std::vector<std::optional<Answer>> answers(readAhead(options, files.size()));
  readInOrder(
      files, options, answers.size(),
      [&](std::size_t place, const ByteSource& source) { answers[place] = ask(source); },
      [&](std::size_t file, std::size_t place, const ReadOutcome& outcome) {
        tell(files[file], outcome, std::exchange(answers[place], std::nullopt));
      });
}

}  // namespace Inspect
