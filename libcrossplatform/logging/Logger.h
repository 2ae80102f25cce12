#pragma once

#include <cstdarg>
#include <cstdint>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// Receives all log lines of the library. Not synchronised: set the sink before the first thread logs.
class VELTRA_EXPORT Logger {
 public:
  /// Part of the system a line comes from.
  enum Facility : int32_t {
    FACILITY_COMMON = 13,  ///< this library
  };
  /// Severity; smaller is worse.
  enum Severity : int32_t {
    SEVERITY_ERROR = 1,
    SEVERITY_WARNING = 2,  ///< done, but not fully as requested
  };

  /// Receives every line before it is formatted. `args` belongs to the caller and may be read once.
  using Sink = void (*)(Facility facility, Severity severity, const char* format, va_list args);

  /// Hands one printf-style line to the sink.
  static void log(Facility facility, Severity severity, const char* format, ...) __attribute__((format(printf, 3, 4)));

  /// Replaces the sink. Null restores the default, which prints one line on standard error.
  /// @return the previous sink
  static Sink setSink(Sink sink);
};

}  // namespace Veltra
