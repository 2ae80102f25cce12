#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <array>
#include <cstdint>
#include <memory>

#include <libcrossplatform/common/PFileSection.h>

namespace PFile {

/// Writes a container into a caller's buffer. After close() the file is the beginning of the buffer, with the length
/// that the file header records.
class VELTRA_EXPORT MemWriter {
 public:
  MemWriter() = default;
  /// Callbacks for messages; null drops them.
  MemWriter(LogCallback debug, LogCallback warning, LogCallback error);
  ~MemWriter();  ///< close()
  MemWriter(const MemWriter&) = delete;
  MemWriter& operator=(const MemWriter&) = delete;

  /// Takes a buffer, borrowed until close(), and writes the file-header section into it.
  /// @return 0; -1 a buffer is set already, it is null, or it is too small: it then stays set and must be closed
  [[nodiscard]] int open(unsigned char* buffer, unsigned int size);
  /// Appends raw bytes.
  /// @return 0; -1 null data, no buffer, or not enough room: nothing is copied
  [[nodiscard]] int write(unsigned char const* data, unsigned int n);
  /// Appends a section, compressing it first if its flags ask for it and it is not compressed yet.
  /// @return 0; -1 compression failed or not enough room. A section without payload bytes is reported, not written, and
  ///         gives 0, unlike FileWriter::write().
  [[nodiscard]] int write(Section& section);
  /// Writes the total length into the file header and releases the buffer to the caller.
  /// @return 0; -1 nothing is open, or the buffer has no room for a file header
  [[nodiscard]] int close();

 private:
  void setMark(uint32_t mark);

  std::unique_ptr<Section> _fileHeader;
  unsigned char* _buffer = nullptr;
  uint32_t _capacity = 0;
  uint32_t _index = 0;
  uint32_t _mark = 0;                   ///< largest index reached: the length of the file
  std::array<uint8_t, 4> _markBytes{};  ///< the mark as it stands in the file, borrowed by the file header
  LogCallback _debug = nullptr;
  LogCallback _warning = nullptr;
  LogCallback _error = nullptr;
};

}  // namespace PFile
