#include "Terminal.h"

#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>

#include <libcrossplatform/common/EnumText.h>

namespace Command {
namespace {

constexpr Veltra::EnumText<Tone> SEQUENCES[] = {
    {Tone::PLAIN, ""},          {Tone::GOOD, "\033[32m"}, {Tone::BAD, "\033[31m"}, {Tone::DOUBTFUL, "\033[33m"},
    {Tone::HEADING, "\033[1m"},
};
static_assert(isOneToOne(SEQUENCES));
constexpr char RESET[] = "\033[0m";

bool paintsOutput = false, paintsErrors = false;

bool knowsColors(int descriptor) {
  const char* const noColor = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(descriptor) == 1 && (noColor == nullptr || *noColor == '\0') && terminal != nullptr &&
         std::strcmp(terminal, "dumb") != 0;
}

std::string wrapped(bool paints, const std::string& text, Tone tone) {
  return paints && tone != Tone::PLAIN ? textOf(SEQUENCES, tone) + text + RESET : text;
}

}  // namespace

void setColor(Color color) {
  paintsOutput = color == COLOR_ALWAYS || (color == COLOR_AUTO && knowsColors(STDOUT_FILENO));
  paintsErrors = color == COLOR_ALWAYS || (color == COLOR_AUTO && knowsColors(STDERR_FILENO));
}

Inspect::Charset charset() {
  return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 ? Inspect::Charset::UTF8 : Inspect::Charset::ASCII;
}

std::string printable(const std::string& text) {
  return Inspect::printable(text, charset());
}

const char* sequenceOf(Tone tone) {
  return paintsOutput ? textOf(SEQUENCES, tone) : "";
}

std::string painted(const std::string& text, Tone tone) {
  return wrapped(paintsOutput, text, tone);
}

std::string paintedError(const std::string& text, Tone tone) {
  return wrapped(paintsErrors, text, tone);
}

Progress::Progress(bool isEnabled) : _active(isEnabled && isatty(STDERR_FILENO) == 1) {}

void Progress::advance(uint64_t bytes) {
  constexpr int WIDTH = 30;
  if (!_active) return;
  const std::lock_guard<std::mutex> lock(_mutex);
  _done += bytes;
  const Clock::time_point now = Clock::now();
  if (now < _next || _total == 0) return;
  _next = now + std::chrono::milliseconds(100);
  const double part = std::min(1.0, static_cast<double>(_done) / static_cast<double>(_total));
  const std::string bar(static_cast<std::size_t>(part * WIDTH), '#');
  fmt::print(stderr, "\r[{:<{}}] {:3.0f} %\033[K", bar, WIDTH, part * 100);
  (void)std::fflush(stderr);  // a bar that cannot be shown is not an error
  _shown = true;
}

void Progress::hide() {
  const std::lock_guard<std::mutex> lock(_mutex);
  if (!_shown) return;
  fmt::print(stderr, "\r\033[K");
  (void)std::fflush(stderr);  // a bar that cannot be shown is not an error
  _shown = false;
}

}  // namespace Command
