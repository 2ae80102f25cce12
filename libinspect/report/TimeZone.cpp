#include <libinspect/report/TimeZone.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

namespace Inspect {
namespace {

constexpr char VARIABLE[] = "TZ";
constexpr char UTC[] = "UTC";

const char* databaseFolder() {
  const char* const folder = std::getenv("TZDIR");
  return folder != nullptr ? folder : "/usr/share/zoneinfo";
}

/// Whether the database has a zone: the system takes any other name for UTC, without a word.
bool isKnown(const std::string& name) {
  const auto isOfName = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '/' || c == '_' || c == '-' || c == '+';
  };
  std::error_code unknown;
  return name == UTC || (!name.empty() && name.front() != '/' && std::all_of(name.begin(), name.end(), isOfName) &&
                         std::filesystem::is_regular_file(std::filesystem::path(databaseFolder()) / name, unknown));
}

/// What the machine calls its zone; empty if it has no name.
std::string nameOfMachine() {
  constexpr char DATABASE[] = "/zoneinfo/";
  const char* const variable = std::getenv(VARIABLE);
  if (variable != nullptr) return *variable == '\0' ? UTC : *variable == ':' ? variable + 1 : variable;
  std::error_code unknown;
  const std::string file = std::filesystem::canonical("/etc/localtime", unknown).string();
  if (unknown) return UTC;
  const std::size_t at = file.find(DATABASE);
  return at == std::string::npos ? std::string() : file.substr(at + sizeof DATABASE - 1);
}

std::string formatted(time_t time, const char* form) {
  std::tm parts{};
  char text[64];
  if (localtime_r(&time, &parts) == nullptr) return {};
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
  if (!isKnown(name)) {
    error = fmt::format("{}: expected a time zone, such as Europe/Berlin or UTC", name);
    return false;
  }
  const char* const before = std::getenv(VARIABLE);
  if (before != nullptr) _before = before;
  _name = name;
  setenv(VARIABLE, name.c_str(), 1);
  tzset();
  return true;
}

std::string TimeZone::nameAt(time_t time) const {
  const std::string name = _name.empty() ? nameOfMachine() : _name;
  std::string ahead = formatted(time, "%z");  // +0100
  if (name == UTC || ahead.size() < 5) return name.empty() ? UTC : name;
  ahead.insert(3, ":");
  return fmt::format("{}{}UTC{}", name, name.empty() ? "" : ", ", ahead);
}

std::string TimeZone::minute(time_t time) const {
  return formatted(time, "%Y-%m-%d %H:%M");
}

std::string TimeZone::day(time_t time) const {
  return formatted(time, "%Y-%m-%d");
}

}  // namespace Inspect
