#pragma once

// Threads: any number may call these functions at once.

#include <ctime>
#include <string>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// The seconds field (0 to 60) of a time as UTC, 0 when the time cannot be broken down.
VELTRA_EXPORT int sysTimeToSeconds(time_t t);

/// A time as UTC in the form "%Y%m%d-%H%M", 13 characters, for example 20240131-0915.
/// A year of five digits makes it 14. Empty when the time cannot be broken down or its year has more digits than that.
VELTRA_EXPORT std::string sysTimeToStr(time_t t);

/// Reads the form sysTimeToStr writes.
/// @param ok     cleared on failure, never set: the caller sets it before the call
/// @param isDst  daylight-saving flag handed to timegm()
/// @return the time, or -1 with `ok` cleared: null, other length, no "-" at index 8, a field that is not a number, or a
///         time that time_t cannot hold (past 2038 where it has 32 bits)
VELTRA_EXPORT time_t strToSysTime(bool& ok, const char* s, int isDst);

/// A time as UTC in the form "%FT%T", for example 2019-03-04T05:06:07; empty when it cannot be broken down.
VELTRA_EXPORT std::string isoTime(time_t t);

}  // namespace Veltra
