#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace Inspect {

/// The time zone of the process for as long as this lives: the only place that changes it. Not for use while another
/// thread reads the environment.
class TimeZone {
 public:
  TimeZone();   ///< that of the machine
  ~TimeZone();  ///< brings back the one before
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

  /// Takes a zone of the system's database, such as Europe/Berlin, or UTC. Call it once.
  /// @return false, with `error` filled: there is no such zone, and nothing is changed
  [[nodiscard]] bool use(const std::string& name, std::string& error);

  /// The name, and what it is ahead of UTC at a time: "Europe/Berlin, UTC+01:00".
  std::string nameAt(time_t time) const;
  /// "2024-01-31 10:15", or empty for a time that cannot be written.
  std::string minute(time_t time) const;
  /// "2024-01-31", or empty.
  std::string day(time_t time) const;

 private:
  std::string _name;  // empty: that of the machine
  std::optional<std::string> _before;
};

}  // namespace Inspect
