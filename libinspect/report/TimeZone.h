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
  /// @return false, with `error` naming what was found: there is no such zone, its file is none or counts leap
  /// seconds; nothing is changed
  [[nodiscard]] bool use(const std::string& name, std::string& error);
  /// Whether the machine's own zone, of $TZ or /etc/localtime, is one: the system takes any other for UTC, without a
  /// word.
  /// @return false, with `error` naming what was found
  [[nodiscard]] static bool checkMachine(std::string& error);

  /// Its name, such as Europe/Berlin; empty if it has none.
  std::string name() const;
  /// Its name, and what it is ahead of UTC in a period: "Europe/Berlin, UTC+01:00, from 2024-03-31 UTC+02:00".
  /// @param first  in s since 1970-01-01 UTC; not after `last`
  std::string nameDuring(time_t first, time_t last) const;
  /// "2024-01-31 10:15", or empty for a time that cannot be written.
  std::string minute(time_t time) const;
  /// "2024-01-31", or empty.
  std::string day(time_t time) const;

 private:
  std::string _name;  // empty: that of the machine
  std::optional<std::string> _before;
};

}  // namespace Inspect
