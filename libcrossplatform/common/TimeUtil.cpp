#include <libcrossplatform/common/TimeUtil.h>

#include <cstdio>
#include <cstring>

namespace Veltra {
namespace {

/// strftime() of a time as UTC into a buffer of N bytes; empty when the text does not fit.
template <std::size_t N>
std::string formatUtc(time_t t, const char* format) {
  std::tm parts{};
  if (gmtime_r(&t, &parts) == nullptr) return {};
  char text[N];
  return std::string(text, std::strftime(text, sizeof text, format, &parts));
}

bool readField(const char* s, std::size_t width, int& out) {
  char digits[5] = {};
  std::memcpy(digits, s, width);
  return std::sscanf(digits, "%d", &out) == 1;
}

}  // namespace

int sysTimeToSeconds(time_t t) {
  std::tm parts{};
  return gmtime_r(&t, &parts) != nullptr ? parts.tm_sec : 0;
}

std::string sysTimeToStr(time_t t) {
  return formatUtc<15>(t, "%Y%m%d-%H%M");
}

std::string isoTime(time_t t) {
  return formatUtc<80>(t, "%FT%T");
}

time_t strToSysTime(bool& ok, const char* s, int isDst) {
  std::tm parts{};
  if (s != nullptr && strnlen(s, 14) == 13 && s[8] == '-' && readField(s, 4, parts.tm_year) &&
      readField(s + 4, 2, parts.tm_mon) && readField(s + 6, 2, parts.tm_mday) && readField(s + 9, 2, parts.tm_hour) &&
      readField(s + 11, 2, parts.tm_min)) {
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    parts.tm_isdst = isDst;
    // The form has whole minutes only, so -1 is never a time: it means that time_t cannot hold it.
    const time_t time = timegm(&parts);
    if (time != -1) return time;
  }
  ok = false;
  return -1;
}

}  // namespace Veltra
