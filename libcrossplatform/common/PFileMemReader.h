#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>
#include <optional>

#include <libcrossplatform/common/PFileSection.h>

namespace PFile {

/// Reads a container from a caller's buffer, which it borrows; payloads are borrowed from it too, not copied, unless
/// they are uncompressed. The buffer must outlive reader and sections.
/// Reading functions return 0, -1 for a failure, or -2 at the end of the data, reported to the debug callback only.
/// The file header's section has the callbacks of the reader; any other section uses its own.
class VELTRA_EXPORT MemReader {
 public:
  MemReader() = default;
  /// Callbacks for messages; null drops them.
  MemReader(LogCallback debug, LogCallback warning, LogCallback error);
  ~MemReader();  ///< close()
  MemReader(const MemReader&) = delete;
  MemReader& operator=(const MemReader&) = delete;

  /// Takes a buffer and reads its file header; from then on the recorded length is the end of the data, bytes after
  /// it are ignored.
  /// @return 0; -1 a buffer is set already, it is null, it does not begin with an intact file header, or the recorded
  ///         length exceeds it (only then is the buffer released at once); -2 its size is 0
  [[nodiscard]] int open(unsigned char const* buffer, unsigned int size);
  /// The same, with the recorded length neither compared nor used: for images that were cut short. An image that was
  /// never closed is -1, since its file header does not verify; the buffer then stays set, and after seek(0,
  /// STREAM_FROM_BEGIN) and skipNextSection() its sections can be read.
  [[nodiscard]] int quickOpen(unsigned char const* buffer, unsigned int size);
  /// Reads the next section header and stops after it. The magic is not checked; the header's CRC covers it. Without a
  /// buffer there is no next one: -2.
  [[nodiscard]] int getHeader(Header& header);
  /// The same without moving; -1 also when no buffer is set.
  [[nodiscard]] int peek(Header& header);
  /// Reads the next section.
  /// @param section     receives header and payload
  /// @param uncompress  true: original bytes, 8 MiB at most, owned by the payload; false: stored bytes, borrowed
  /// @return 0, also when the data is shorter than the header claims: the header is then consumed and the payload
  ///         unchanged; -1 no buffer, a wrong CRC-32, bad zlib data, or a size over 2 GiB, reported to no callback;
  ///         -2 end of the data
  [[nodiscard]] int read(Section& section, bool uncompress);
  /// Moves past the next section. @return as getHeader(); -1 also when the section ends outside the data
  [[nodiscard]] int skipNextSection();
  /// Goes `offset` bytes from `whence`. @return the new index; -1, without moving, outside the data
  int seek(int offset, StreamPosition whence);
  /// Releases the buffer to the caller; sections read from it stay valid as long as it does.
  void close();

 private:
  [[nodiscard]] int openImage(unsigned char const* buffer, unsigned int size, char const* method);

  std::optional<Section> _fileHeader;
  unsigned char const* _buffer = nullptr;
  uint32_t _size = 0;
  uint32_t _index = 0;
  LogCallback _debug = nullptr;
  LogCallback _warning = nullptr;
  LogCallback _error = nullptr;
};

}  // namespace PFile
