#pragma once

#include <cstdint>
#include <string>

namespace Inspect {

/// Writes a file beside `path`, syncs it and renames it into place. @return false, with `error` filled; the file at
/// `path` is then as it was
bool writeSafely(const std::string& path, const void* bytes, std::size_t size, std::string& error);

}  // namespace Inspect
