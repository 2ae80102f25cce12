#include <libinspect/records/IsoTime.h>

#include <cstdint>
#include <cstdio>

#include <libcrossplatform/common/TextUtil.h>
#include <libcrossplatform/common/TimeUtil.h>

namespace Inspect {

std::string isoUtc(time_t time) {
  const std::string text = Veltra::isoTime(time);
  return text.empty() ? text : text + "Z";
}

bool fromIsoUtc(const std::string& text, time_t& time) {
  int64_t seconds = 0;
  if (Veltra::strToInt64(seconds, text.c_str(), 10)) {
    time = static_cast<time_t>(seconds);
    return true;
  }
  std::tm parts{};
  int end = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ%n", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                  &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &end) != 6 ||
      static_cast<std::size_t>(end) != text.size()) {
    return false;
  }
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  const time_t read = timegm(&parts);
  // timegm() takes the 31st of April for the 1st of May: a date that is printed differently was not a date.
  if (isoUtc(read) != text) return false;
  time = read;
  return true;
}

}  // namespace Inspect
