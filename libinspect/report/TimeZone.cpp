#include <libinspect/report/TimeZone.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <regex>
#include <vector>

#include <fmt/format.h>

#include <libcrossplatform/serialization/WireBytes.h>
#include <libinspect/container/ByteSource.h>

namespace Inspect {
namespace {

constexpr char VARIABLE[] = "TZ";
constexpr char UTC[] = "UTC";
constexpr char LOCAL_TIME[] = "/etc/localtime";

const char* databaseFolder() {
  const char* const folder = std::getenv("TZDIR");
  return folder != nullptr ? folder : "/usr/share/zoneinfo";
}

/// One of the parts of a zone file: numbers of 4 bytes in the first one, of 8 bytes in the second one.
struct ZoneBlock {
  static constexpr std::size_t HEADER_BYTES = 44;
  uint8_t version = 0;
  uint32_t leaps = 0;
  uint64_t size = 0;  ///< of all but the header
};

/// @return false if there is no such part
bool readBlock(const ByteSource& file, uint64_t at, uint64_t numberBytes, ZoneBlock& block) {
  constexpr std::size_t COUNTS_AT = 20;
  std::array<uint8_t, ZoneBlock::HEADER_BYTES> header{};
  if (file.readAt(at, header.data(), header.size()) != header.size() || std::memcmp(header.data(), "TZif", 4) != 0) {
    return false;
  }
  const auto countAt = [&header](std::size_t place) {
    return Marshal::loadBig<uint32_t>(&header[COUNTS_AT + place * 4]);
  };
  const uint64_t utcMarks = countAt(0), standardMarks = countAt(1), times = countAt(3), types = countAt(4),
                 letters = countAt(5);
  block.version = header[4];
  block.leaps = countAt(2);
  block.size =
      times * (numberBytes + 1) + types * 6 + letters + block.leaps * (numberBytes + 4) + standardMarks + utcMarks;
  return types > 0;
}

/// What is wrong with a file of a zone; empty if nothing is.
std::string faultOfFile(const std::string& path) {
  constexpr char NO_ZONE[] = "which is no time zone file";
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return "which this machine does not know";
  ByteSource file;
  std::string error;
  if (!file.openFile(path, error)) return "which cannot be read: " + error;
  uint64_t end = 0;
  for (const uint64_t numberBytes : {uint64_t{4}, uint64_t{8}}) {
    ZoneBlock block;
    if (!readBlock(file, end, numberBytes, block)) return NO_ZONE;
    end += ZoneBlock::HEADER_BYTES + block.size;
    if (end > file.size()) return NO_ZONE;
    if (block.leaps > 0) return "which counts leap seconds, unlike the times of results";
    if (block.version == 0) break;
  }
  return {};
}

/// The same of a name in the database.
std::string faultOfName(const std::string& name) {
  const auto isOfName = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '/' || c == '_' || c == '-' || c == '+';
  };
  if (name == UTC) return {};
  if (name.empty() || name.front() == '/' || !std::all_of(name.begin(), name.end(), isOfName)) {
    return "which is no name of one";
  }
  return faultOfFile(std::string(databaseFolder()) + "/" + name);
}

/// Whether $TZ has rules instead of a name: "CET-1CEST,M3.5.0,M10.5.0/3".
bool hasRules(const std::string& zone) {
  constexpr std::size_t MOST = 100;
  constexpr char NAME[] = "(<[A-Za-z0-9+-]{3,}>|[A-Za-z]{3,})", MINUTES[] = "(:[0-5]?\\d){0,2}";
  static const std::regex RULES = [&] {
    const std::string offset = fmt::format("[+-]?(2[0-4]|[01]?\\d){}", MINUTES);
    const std::string day = R"((J([1-9]|[1-9]\d|[12]\d\d|3[0-5]\d|36[0-5])|\d|[1-9]\d|[12]\d\d|3[0-5]\d|36[0-5]|)"
                            R"(M([1-9]|1[0-2])\.[1-5]\.[0-6]))";
    const std::string date = fmt::format(",{}(/[+-]?(16[0-7]|1[0-5]\\d|\\d?\\d){})?", day, MINUTES);
    return std::regex(fmt::format("{0}{1}({0}({1})?({2}{2})?)?", NAME, offset, date));
  }();
  return zone.size() <= MOST && std::regex_match(zone, RULES);
}

bool refuse(const std::string& found, const std::string& fault, const char* where, std::string& error) {
  if (fault.empty()) return true;
  error = fmt::format("{}: expected a time zone, such as Europe/Berlin or UTC; found \"{}\", {}", where, found, fault);
  return false;
}

/// $TZ without the colon that it may have; none: the zone is that of LOCAL_TIME.
std::optional<std::string> variable() {
  const char* const text = std::getenv(VARIABLE);
  if (text == nullptr) return std::nullopt;
  return *text == '\0' || std::string(text) == ":" ? UTC : *text == ':' ? text + 1 : text;
}

/// What the machine calls its zone; empty if it has no name.
std::string nameOfMachine() {
  constexpr char DATABASE[] = "/zoneinfo/";
  const std::optional<std::string> given = variable();
  if (given && given->front() != '/') return *given;
  std::error_code unknown;
  const std::string file = std::filesystem::canonical(given.value_or(LOCAL_TIME), unknown).string();
  if (unknown) return UTC;
  const std::size_t at = file.find(DATABASE);
  return at == std::string::npos ? std::string() : file.substr(at + sizeof DATABASE - 1);
}

long secondsAhead(time_t time) {
  std::tm parts{};
  return localtime_r(&time, &parts) != nullptr ? parts.tm_gmtoff : 0;
}

/// From when on a zone is how much ahead of UTC.
struct Offset {
  time_t from;
  long seconds;
};

/// The offsets of a period, in its order. Changes are looked for from day to day, for a century: rules that hold
/// today are the same ones then.
std::vector<Offset> offsetsOf(time_t first, time_t last) {
  constexpr time_t DAY = 86400, CENTURY = DAY * 36525;
  std::vector<Offset> offsets = {{first, secondsAhead(first)}};
  const time_t end = last - first > CENTURY ? first + CENTURY : last;
  for (time_t at = first; at < end;) {
    const time_t next = std::min(at + DAY, end);
    const long before = offsets.back().seconds;
    time_t after = next;
    if (secondsAhead(next) != before) {
      for (time_t low = at; after - low > 1;) {
        const time_t middle = low + (after - low) / 2;
        (secondsAhead(middle) == before ? low : after) = middle;
      }
      offsets.push_back({after, secondsAhead(after)});
    }
    at = after;
  }
  return offsets;
}

std::string formatted(time_t time, const char* form) {
  std::tm parts{};
  char text[64];
  if (localtime_r(&time, &parts) == nullptr) return std::to_string(time);
  return {text, std::strftime(text, sizeof text, form, &parts)};
}

}  // namespace

TimeZone::TimeZone() {
  tzset();  // localtime_r() need not look at the zone
}

TimeZone::~TimeZone() {
  if (_name.empty()) return;
  if (_before) {
    setenv(VARIABLE, _before->c_str(), 1);
  } else {
    unsetenv(VARIABLE);
  }
  tzset();
}

bool TimeZone::use(const std::string& name, std::string& error) {
  if (!refuse(name, faultOfName(name), "--timezone", error)) return false;
  const char* const before = std::getenv(VARIABLE);
  if (before != nullptr) _before = before;
  _name = name;
  setenv(VARIABLE, name.c_str(), 1);
  tzset();
  return true;
}

bool TimeZone::checkMachine(std::string& error) {
  const std::optional<std::string> given = variable();
  if (given && given->front() != '/') {
    return hasRules(*given) || refuse(*given, faultOfName(*given), VARIABLE, error);
  }
  std::error_code unknown;
  const std::string file = given.value_or(LOCAL_TIME);
  if (!given && !std::filesystem::exists(file, unknown)) return true;  // a machine without a zone has UTC
  return refuse(file, faultOfFile(file), given ? VARIABLE : LOCAL_TIME, error);
}

std::string TimeZone::name() const {
  return _name.empty() ? nameOfMachine() : _name;
}

std::string TimeZone::nameDuring(time_t first, time_t last) const {
  constexpr std::size_t MOST = 4;
  std::string text = name();
  if (text == UTC) return text;
  const std::vector<Offset> offsets = offsetsOf(first, last);
  std::vector<std::string> known;
  for (const Offset& offset : offsets) {
    std::string ahead = formatted(offset.from, "%z");  // +0100
    if (ahead.size() != 5) continue;
    ahead = "UTC" + ahead.insert(3, ":");
    const bool isNew = std::find(known.begin(), known.end(), ahead) == known.end();
    if (isNew) known.push_back(ahead);
    if (offsets.size() > MOST && !isNew) continue;
    const std::string from =
        &offset == &offsets.front() || offsets.size() > MOST ? "" : fmt::format("from {} ", day(offset.from));
    if (!text.empty()) text += ", ";
    text += from;
    text += ahead;
  }
  return offsets.size() > MOST ? text + " in turn" : text;
}

std::string TimeZone::minute(time_t time) const {
  return formatted(time, "%Y-%m-%d %H:%M");
}

std::string TimeZone::day(time_t time) const {
  return formatted(time, "%Y-%m-%d");
}

}  // namespace Inspect
