#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

#include <libcrossplatform/common/PFileSection.h>

namespace PFile {

/// Reads a container file section by section. Memory use follows the current section.
/// Reading functions return 0, -1 for a failure, or -2 at the end of the file, reported to the debug
/// callback only. A file cut within a section header reads as ended. After a failure the position is where the call
/// left it.
class VELTRA_EXPORT FileReader {
 public:
  FileReader() = default;
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
  /// The same without moving; -1 also when not open, or the non-zero result of fseek().
  [[nodiscard]] int peek(Header& header);
  /// Reads the next section.
  /// @param section     receives header and payload; the payload owns its bytes
  /// @param uncompress  true: original bytes, 8 MiB at most; false: stored bytes, still compressed
  /// @return 0; -1 not open, a wrong CRC-32, fewer bytes than the header claims, or bad zlib data; -2 end of file
  [[nodiscard]] int read(Section& section, bool uncompress);
  /// Moves past the next section without reading its payload, even past the end of the file.
  /// @return as getHeader(), -1 when not open, or the non-zero result of fseek()
  [[nodiscard]] int skipNextSection();
  /// The total length in the file header, in bytes, right only if the writer closed the file and wrote no other
  /// before it. @return 0 when nothing is open, or the file header has more or less than this word
  uint32_t recordedLength() const;
  /// @return 0, also when nothing is open, or the non-zero result of fclose()
  int close();

 private:
  [[nodiscard]] bool readPayload(Section& section, std::size_t& got);

  std::unique_ptr<Section> _fileHeader;
  std::FILE* _stream = nullptr;
  std::unique_ptr<char[]> _stdioBuffer;
  LogCallback _debug = nullptr;
  LogCallback _warning = nullptr;
  LogCallback _error = nullptr;
};

}  // namespace PFile
