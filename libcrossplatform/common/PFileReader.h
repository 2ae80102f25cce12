#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

#include <libcrossplatform/common/PFileSection.h>

namespace PFile {

/// Reads a container file section by section. Memory use follows the current section.
/// Reading functions return 0, -1 for a failure, or -2 at the end of the file, reported to the debug
/// callback only. A file cut within a section header reads as ended. After a failure the position is where the call
/// left it.
class VELTRA_EXPORT FileReader {
 public:
  FileReader() = default;
  /// Callbacks for messages; null drops them.
  FileReader(LogCallback debug, LogCallback warning, LogCallback error);
  ~FileReader();  ///< close()
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  /// Opens a file and reads its file header, whose total length is not compared with the file.
  /// @return 0; -1 a file is open already, null path, a directory, it could not be opened, or it does not begin with an
  ///         intact file header; -2 it is empty. If the file itself could be opened, it stays open: close() it.
  [[nodiscard]] int open(char const* path);
  /// The same, reading `readAhead` bytes, 1 or more, at a time instead of 64 KiB: less is faster for a few sections.
  [[nodiscard]] int open(char const* path, std::size_t readAhead);
  /// Reads the next section header and stops after it. The magic is not checked; the header's CRC covers it.
  [[nodiscard]] int getHeader(Header& header);
  /// The same without moving; -1 also when not open, or in a file without positions, such as a pipe.
  [[nodiscard]] int peek(Header& header);
  /// Reads the next section.
  /// @param section     receives header and payload; the payload owns its bytes
  /// @param uncompress  true: original bytes, 8 MiB at most; false: stored bytes, still compressed
  /// @return 0; -1 not open, a wrong CRC-32, fewer bytes than the header claims, or bad zlib data; -2 end of file. When
  ///         the file has too few bytes, the payload is as it was. One of 64 KiB to 8 MiB that cannot be read
  ///         although the file has it (I/O error, no memory) leaves an empty payload: two are not held at once.
  [[nodiscard]] int read(Section& section, bool uncompress);
  /// Moves past the next section without its payload, even past the end of the file.
  /// @return as getHeader(), -1 when not open, or the non-zero result of fseek()
  [[nodiscard]] int skipNextSection();
  /// The total length in the file header, in bytes, right only if the writer closed the file and wrote no other
  /// before it. @return 0 when nothing is open, or the file header has more or less than this word
  uint32_t recordedLength() const;
  /// @return 0, also when nothing is open, or the non-zero result of fclose()
  int close();

 private:
  void fetchHeader();
  [[nodiscard]] bool readPayload(Section& section, std::size_t& got);
  [[nodiscard]] int skip(uint32_t size);
  bool isSeekable();

  std::optional<Section> _fileHeader;
  std::FILE* _stream = nullptr;
  std::unique_ptr<char[]> _stdioBuffer;
  std::array<uint8_t, Header::BYTES> _ahead{};  ///< the header read last
  std::size_t _aheadSize = 0;                   ///< less than all of it: the file ended, or could not be read
  bool _isAhead = false;                        ///< it was looked at only: the next call begins with it
  bool _isSeekable = false;                     ///< the stream has told its position once
  LogCallback _debug = nullptr;
  LogCallback _warning = nullptr;
  LogCallback _error = nullptr;
};

}  // namespace PFile
