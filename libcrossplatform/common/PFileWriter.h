#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>

#include <libcrossplatform/common/PFileSection.h>

namespace PFile {

/// Writes a container file section by section. The file is complete only after close(); until then its file header
/// does not verify. An old file is truncated in place: after a power cut there may be neither the old file nor the new
/// one. Use SafeFileWriter to replace a file safely.
class VELTRA_EXPORT FileWriter {
 public:
  static constexpr uint32_t MAX_BYTES = 0xFFFFFFFF;  ///< the largest container

  FileWriter() = default;
  /// Callbacks for messages; null drops them.
  FileWriter(LogCallback debug, LogCallback error);
  ~FileWriter();  ///< close(false)
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;

  /// Creates or truncates the file and writes its file-header section.
  /// @return 0; -1 a file is open already, null path, a directory, or it could not be opened or written. After a failed
  ///         write the file is open and must be closed.
  [[nodiscard]] int open(char const* path);
  /// Appends a section, compressing it first if its flags ask for it and it is not compressed yet.
  /// @return 0; -1 not open, no payload bytes, compression failed, or a short write: the file then ends in a torn
  ///         section
  [[nodiscard]] int write(Section& section);
  /// Writes the total length into the file header and closes.
  /// @param sync  true: the bytes are on the disk when this returns 0
  /// @return 0, also when nothing is open; -1 something could not be written or synced, the first reason in `errno`.
  ///         The file is closed either way.
  [[nodiscard]] int close(bool sync);
  /// Whether a file is open, also after a failed write.
  bool isOpen() const { return _stream != nullptr; }
  /// Bytes written so far, those of earlier files included. A section that takes them beyond MAX_BYTES, its header
  /// included, stops the program.
  uint32_t size() const { return _total; }

 private:
  friend class SafeFileWriter;

  [[nodiscard]] int start(std::FILE* stream);
  [[nodiscard]] bool append(void const* data, uint32_t size);
  [[nodiscard]] int writeTotal();
  [[nodiscard]] int syncToDisk();
  void addToTotal(uint32_t bytes, char const* wrapExpression);

  std::unique_ptr<Section> _fileHeader;
  std::FILE* _stream = nullptr;
  /// Bytes written. Only the constructor zeroes it: a writer used for a second file continues the count of the
  /// first, and files in the field that were written this way record such totals.
  uint32_t _total = 0;
  std::array<uint8_t, 4> _totalBytes{};  ///< the total as it stands in the file, borrowed by the file header
  std::unique_ptr<char[]> _stdioBuffer;
  LogCallback _debug = nullptr;
  LogCallback _error = nullptr;
};

}  // namespace PFile
