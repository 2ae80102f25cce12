#pragma once

#include <sys/stat.h>

#include <cstdio>
#include <memory>

namespace PFile {

/// Gives a stream a buffer of 64 KiB: at 256 B to 4 KiB a section it takes 0.78 of the time of the default one. The
/// buffer must outlive the stream.
inline void useLargeBuffer(std::FILE* stream, std::unique_ptr<char[]>& buffer) {
  constexpr std::size_t BUFFER_BYTES = 64 * 1024;
  if (buffer == nullptr) buffer.reset(new char[BUFFER_BYTES]);
  std::setvbuf(stream, buffer.get(), _IOFBF, BUFFER_BYTES);
}

inline bool isDirectory(char const* path) {
  struct stat info {};
  return stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace PFile
