#pragma once

#include <ctime>
#include <string>

namespace Inspect {

/// A time as ISO 8601, UTC: 2024-01-31T09:15:00Z; empty for a time that cannot be written.
std::string isoUtc(time_t time);
/// Reads the form isoUtc() writes, or whole seconds since 1970. @return false, with `time` unchanged, for anything else
[[nodiscard]] bool fromIsoUtc(const std::string& text, time_t& time);

}  // namespace Inspect
