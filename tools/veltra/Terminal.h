#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace Command {

enum Color { COLOR_AUTO, COLOR_ALWAYS, COLOR_NEVER };

/// What a text is to be taken for. A colour never says what the text does not.
enum class Tone { PLAIN, GOOD, BAD, DOUBTFUL, HEADING };

/// Settles whether texts are painted: with COLOR_AUTO each of the two streams where it is a terminal that knows
/// colours, and NO_COLOR is not set (https://no-color.org).
void setColor(Color color);

/// The escape sequence of a tone for standard output; empty where nothing is painted.
const char* sequenceOf(Tone tone);
/// A text for standard output in its tone.
std::string painted(const std::string& text, Tone tone);
/// A text for standard error in its tone.
std::string paintedError(const std::string& text, Tone tone);

/// A bar on standard error while many bytes are read: only on a terminal, and only after a second.
class Progress {
 public:
  explicit Progress(bool wanted);
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool active() const { return _active; }
  /// To be called before the first advance().
  void expect(uint64_t bytes) { _total = bytes; }
  /// So many bytes more were read. From any thread.
  void advance(uint64_t bytes);
  /// Clears the bar's line, before anything else is printed. The next advance() draws it again.
  void hide();

 private:
  using Clock = std::chrono::steady_clock;

  bool _active;
  uint64_t _total = 0;
  std::mutex _mutex;  // guards what follows
  uint64_t _done = 0;
  bool _shown = false;
  Clock::time_point _next = Clock::now() + std::chrono::seconds(1);
};

}  // namespace Command
