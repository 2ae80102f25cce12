#include "Terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

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

/// Whether a stream goes to a terminal that obeys escape sequences.
bool knowsEscapes(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  return isatty(descriptor) == 1 && terminal != nullptr && *terminal != '\0' && std::strcmp(terminal, "dumb") != 0;
}

bool knowsColors(int descriptor) {
  const char* const noColor = std::getenv("NO_COLOR");
  return knowsEscapes(descriptor) && (noColor == nullptr || *noColor == '\0');
}

std::string wrapped(bool paints, const std::string& text, Tone tone) {
  return paints && tone != Tone::PLAIN ? textOf(SEQUENCES, tone) + text + RESET : text;
}

}  // namespace

void setColor(Color color) {
  paintsOutput = color == COLOR_ALWAYS || (color == COLOR_AUTO && knowsColors(STDOUT_FILENO));
  paintsErrors = color == COLOR_ALWAYS || (color == COLOR_AUTO && knowsColors(STDERR_FILENO));
}

bool isOutputTerminal() {
  static const bool isTerminal = isatty(STDOUT_FILENO) == 1;
  return isTerminal;
}

Inspect::Charset charset() {
  return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 ? Inspect::Charset::UTF8 : Inspect::Charset::ASCII;
}

std::string printable(const std::string& text) {
  return Inspect::printable(text, charset());
}

std::string painted(const std::string& text, Tone tone) {
  return wrapped(paintsOutput, text, tone);
}

std::string paintedError(const std::string& text, Tone tone) {
  return wrapped(paintsErrors, text, tone);
}

namespace {

Progress* bar = nullptr;

struct ByteUnit {
  double bytes;
  const char* name;
};
ByteUnit unitFor(uint64_t bytes) {
  constexpr ByteUnit UNITS[] = {{1e9, "GB"}, {1e6, "MB"}, {1e3, "kB"}};
  for (const ByteUnit& unit : UNITS) {
    if (static_cast<double>(bytes) >= unit.bytes) return unit;
  }
  return {1, "B"};
}

/// "412.0/1200.3 MB"
std::string amountText(uint64_t done, uint64_t total) {
  const ByteUnit unit = unitFor(total);
  return fmt::format("{:.1f}/{:.1f} {}", static_cast<double>(done) / unit.bytes,
                     static_cast<double>(total) / unit.bytes, unit.name);
}

/// "85.1 MB/s"
std::string rateText(uint64_t done, double seconds) {
  const double perSecond = static_cast<double>(done) / seconds;
  const ByteUnit rate = unitFor(static_cast<uint64_t>(perSecond));
  return fmt::format("{:.1f} {}/s", perSecond / rate.bytes, rate.name);
}

/// "0:12 left", "2:05:40 left"
std::string timeLeft(double seconds) {
  constexpr double MOST = 1e6;
  const auto left = static_cast<unsigned>(std::min(seconds, MOST));
  return left < 3600 ? fmt::format("{}:{:02} left", left / 60, left % 60)
                     : fmt::format("{}:{:02}:{:02} left", left / 3600, left / 60 % 60, left % 60);
}

/// Parts of a line, from the left, joined as far as they fit: each that is left out makes room for the others.
struct LinePart {
  std::string text;
  int worth;  ///< the part of the least worth goes first
};
std::string fittingLine(std::vector<LinePart> parts, std::size_t width) {
  parts.erase(std::remove_if(parts.begin(), parts.end(), [](const LinePart& part) { return part.text.empty(); }),
              parts.end());
  for (;;) {
    std::string line;
    for (const LinePart& part : parts) line += (line.empty() ? "" : line.back() == ']' ? " " : ", ") + part.text;
    if (line.size() <= width || parts.size() <= 1) return line.substr(0, width);
    parts.erase(std::min_element(parts.begin(), parts.end(),
                                 [](const LinePart& a, const LinePart& b) { return a.worth < b.worth; }));
  }
}

/// Columns of the terminal on standard error; none known: enough for any line.
std::size_t terminalWidth() {
  constexpr std::size_t WIDE = 1000;
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : WIDE;
}

}  // namespace

Room::Room(std::FILE* stream) : _held(stream == stderr || isOutputTerminal() ? bar : nullptr) {
  if (_held != nullptr) _held->hold();
}

Room::~Room() {
  if (_held != nullptr) _held->release();
}

Progress::Progress(bool isEnabled) : _active(isEnabled && knowsEscapes(STDERR_FILENO)) {
  if (_active) bar = this;
}

Progress::~Progress() {
  hold();
  if (bar == this) bar = nullptr;
}

void Progress::expect(uint64_t bytes, std::size_t files) {
  _total = bytes;
  _files = files;
}

void Progress::advance(uint64_t bytes) {
  if (!_active) return;
  const std::lock_guard<std::mutex> lock(_mutex);
  _done += bytes;
  const Clock::time_point now = Clock::now();
  if (_held == 0 && now >= _next && _total > 0) draw(now);
}

void Progress::finishFile() {
  const std::lock_guard<std::mutex> lock(_mutex);
  ++_filesDone;
}

void Progress::draw(Clock::time_point now) {
  constexpr int WIDTH = 16;
  _next = now + std::chrono::milliseconds(100);
  const uint64_t done = std::min(_done, _total);
  const double seconds = std::chrono::duration<double>(now - _begin).count();
  const double part = static_cast<double>(done) / static_cast<double>(_total);
  const std::string drawn(static_cast<std::size_t>(part * WIDTH), '#');
  std::vector<LinePart> parts = {{fmt::format("[{:<{}}]", drawn, WIDTH), 1}, {fmt::format("{:3.0f} %", part * 100), 5}};
  if (_files > 0) {
    parts.push_back({fmt::format("{}/{} files", _filesDone, _files), 4});
    parts.push_back({amountText(done, _total), 3});
    parts.push_back({rateText(done, seconds), 2});
  }
  if (part > 0) parts.push_back({timeLeft(seconds / part * (1 - part)), 6});
  fmt::print(stderr, "\r{}\033[K", fittingLine(std::move(parts), terminalWidth() - 1));
  (void)std::fflush(stderr);  // a bar that cannot be shown is not an error
  _shown = true;
}

void Progress::hold() {
  const std::lock_guard<std::mutex> lock(_mutex);
  ++_held;
  if (!_shown) return;
  fmt::print(stderr, "\r\033[K");
  (void)std::fflush(stderr);  // a bar that cannot be shown is not an error
  _shown = false;
  _next = Clock::time_point();  // whoever reads on sees it again at once
}

void Progress::release() {
  const std::lock_guard<std::mutex> lock(_mutex);
  --_held;
}

}  // namespace Command
