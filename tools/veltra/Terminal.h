#pragma once

#include <chrono>
#include <cstdint>
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

/// What the locale can show: UTF-8, or in any other locale ASCII alone.
Inspect::Charset charset();
/// Text from outside as it may be shown in this locale.
std::string printable(const std::string& text);

/// The escape sequence of a tone for standard output; empty if output is not coloured.
const char* sequenceOf(Tone tone);
/// A text for standard output in its tone.
std::string painted(const std::string& text, Tone tone);
/// A text for standard error in its tone.
std::string paintedError(const std::string& text, Tone tone);

/// A progress bar on standard error while many bytes are read: only on a terminal, and only after one second.
class Progress {
 public:
  explicit Progress(bool isEnabled);
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool active() const { return _active; }
  /// Call it before the first advance().
  void expect(uint64_t bytes) { _total = bytes; }
  /// Adds bytes that were read. From any thread.
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
