#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/jsonutil.h>

namespace Veltra {

/// Reading and replacing a small settings file in a folder where others may put things of the same name.
///
/// It is a regular file: a FIFO, device or folder is refused at once, without blocking on it. A symbolic link is
/// followed when it belongs to root or to the caller, and refused otherwise.

constexpr std::size_t PROFILE_FILE_MAX_BYTES = JsonBounds::STYLED_BYTES;  // what is saved can be read

enum class ProfileOwner : int32_t {
  ANY,
  TRUSTED,  ///< root or the caller, unless nobody else can put a file into the folder
};

/// Replaces a file, or the one that links lead to, by one of mode 0600 that belongs to the caller.
/// @param expected  what it must still be when it is replaced; null accepts any
/// @return false with the reason in errno, ESTALE for an unexpected file; the old file is unchanged, unless only its
///         folder could not be synced
[[nodiscard]] bool writeProfileFile(const std::string& path, const std::string& text, const FileStamp* expected);

/// Reads a whole file.
/// @return false, with `text` unchanged and the reason in errno: it cannot be opened or read (as the system says), is a
///         folder (EISDIR), another special file (ENOTSUP) or a link that is not followed (EACCES, ELOOP), has more
///         than PROFILE_FILE_MAX_BYTES (EFBIG), or belongs to another owner than allowed (EPERM)
[[nodiscard]] bool readProfileFile(const std::string& path, ProfileOwner owner, std::string& text);

}  // namespace Veltra
