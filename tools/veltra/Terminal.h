#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include <libinspect/container/PrintableText.h>

namespace Command {

enum Color { COLOR_AUTO, COLOR_ALWAYS, COLOR_NEVER };

/// The meaning of a text. A colour never says more than the text.
enum class Tone { PLAIN, GOOD, BAD, DOUBTFUL, HEADING };

/// Decides whether texts are coloured: with COLOR_AUTO on each of the two streams that is a terminal with colours,
/// unless NO_COLOR is set (https://no-color.org).
void setColor(Color color);

/// Whether standard output is a terminal: people read it as it comes.
bool isOutputTerminal();

/// What the locale can show: UTF-8, or in any other locale ASCII alone.
Inspect::Charset charset();
/// Text from outside as it may be shown in this locale.
std::string printable(const std::string& text);

/// A text for standard output in its tone.
std::string painted(const std::string& text, Tone tone);
/// A text for standard error in its tone.
std::string paintedError(const std::string& text, Tone tone);

/// A progress bar on standard error while many bytes are read: only on a terminal, and only after one second. One at a
/// time.
class Progress {
 public:
  explicit Progress(bool isEnabled);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool active() const { return _active; }
  /// Call it before the first advance().
  /// @param files  that have these bytes in all; 0: the bytes are no file's, and are not shown
  void expect(uint64_t bytes, std::size_t files = 0);
  /// Adds bytes that were read. From any thread.
  void advance(uint64_t bytes);
  /// Adds a file that was read. From any thread.
  void finishFile();
  /// Clears the bar's line and keeps it clear until release(), whoever reads meanwhile. Once more holds it longer.
  void hold();
  /// The next advance() draws the bar again.
  void release();

 private:
  using Clock = std::chrono::steady_clock;
  void draw(Clock::time_point now);

  bool _active;
  uint64_t _total = 0;
  std::size_t _files = 0;
  const Clock::time_point _begin = Clock::now();
  std::mutex _mutex;  // guards what follows
  uint64_t _done = 0;
  std::size_t _filesDone = 0;
  bool _shown = false;
  int _held = 0;
  Clock::time_point _next = _begin + std::chrono::seconds(1);
};

/// While it lives something else goes to a stream: no progress bar is on its line if that may be the same terminal.
class Room {
 public:
  explicit Room(std::FILE* stream);
  ~Room();
  Room(const Room&) = delete;
  Room& operator=(const Room&) = delete;

 private:
  Progress* _held;
};

}  // namespace Command
