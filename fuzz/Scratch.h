#pragma once

#include <string>

#include "FuzzInput.h"

namespace Fuzz {

/// A file in memory that is opened by a path, for code that reads files. Nothing of it is left behind.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  void fill(const uint8_t* data, std::size_t size);
  const char* path() const { return _path.c_str(); }

 private:
  int _descriptor;
  std::string _path;
};

/// A directory of its own under TMPDIR, for what writes beside and renames. Gone when the process ends in order.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::string file(const char* name) const { return _path + "/" + name; }
  std::size_t files() const;

 private:
  std::string _path;
};

}  // namespace Fuzz
