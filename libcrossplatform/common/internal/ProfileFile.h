#pragma once

#include <cstddef>
#include <string>

namespace Veltra {

/// Reading and writing a small settings file in a directory where others may put things of the same name.
///
/// Only a regular file is opened: a FIFO, device or directory is refused at once, without blocking on it. A symbolic
/// link is followed when it belongs to root or to the caller, and refused otherwise.

constexpr std::size_t PROFILE_FILE_MAX_BYTES = std::size_t{4} * 1024 * 1024;

/// Replaces the content of a file, which is created with mode 0600 when it does not exist.
/// @return false when it cannot be opened or not every byte could be written; the old content is lost in the second
/// case
bool writeProfileFile(const std::string& path, const std::string& text);

/// Reads a file whole.
/// @return false, `text` as it was, when it cannot be opened or read, or has more than PROFILE_FILE_MAX_BYTES
bool readProfileFile(const std::string& path, std::string& text);

}  // namespace Veltra
