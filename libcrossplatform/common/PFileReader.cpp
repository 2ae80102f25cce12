#include <libcrossplatform/common/PFileReader.h>

#include <stdio_ext.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include <libcrossplatform/common/internal/PFileLog.h>
#include <libcrossplatform/common/internal/PFileRead.h>
#include <libcrossplatform/common/internal/PFileStdio.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace PFile {
namespace {

constexpr char CLASS_NAME[] = "PFileReader";
constexpr char SOURCE[] = "libcrossplatform/common/PFileReader";

/// Bytes left of a regular file; empty for a file without a size to compare a claim with.
std::optional<uint64_t> bytesLeft(std::FILE* stream) {
  struct stat info {};
  const off_t at = ftello(stream);
  if (at < 0 || fstat(fileno(stream), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  return static_cast<uint64_t>(info.st_size > at ? info.st_size - at : 0);
}

}  // namespace

FileReader::FileReader(LogCallback debug, LogCallback warning, LogCallback error)
    : _debug(debug), _warning(warning), _error(error) {
  PFILE_LOG(_debug, "");
}

FileReader::~FileReader() {
  PFILE_LOG(_debug, "");
  close();
}

int FileReader::open(char const* path) {
  return open(path, LARGE_BUFFER_BYTES);
}

int FileReader::open(char const* path, std::size_t readAhead) {
  PFILE_LOG_VALUES(_debug, "PFileReader::open(%s)", path != nullptr ? path : "(null)");
  if (_stream != nullptr) {
    PFILE_LOG(_error, "Already have another file open.");
    return PFILE_FAILED;
  }
  if (path == nullptr) {
    PFILE_LOG(_error, "File Path is NULL.");
    return PFILE_FAILED;
  }
  _stream = std::fopen(path, "rb");
  if (_stream != nullptr) {
    useBuffer(_stream, _stdioBuffer, readAhead);
    // Its one owner needs no lock. A writer's stream keeps its own: fflush(nullptr) of any thread writes from that.
    __fsetlocking(_stream, FSETLOCKING_BYCALLER);
    _isSeekable = false;
    _isAhead = false;
    fetchHeader();
  }
  // A directory can be opened, but not read.
  if ((_stream == nullptr || std::ferror(_stream) != 0) && isDirectory(path)) {
    if (_stream != nullptr) (void)std::fclose(_stream);
    _stream = nullptr;
    PFILE_LOG(_error, "Trying to open a directory.");
    return PFILE_FAILED;
  }
  if (_stream == nullptr) {
    PFILE_LOG_VALUES(_error, "fopen failed.errno:%d", errno);
    return PFILE_FAILED;
  }
  _fileHeader.emplace(_debug, _warning, _error);
  const int code = read(*_fileHeader, true);
  if (code != PFILE_OK) return code;
  if (_fileHeader->header.type != FILE_HEADER_TYPE) {
    PFILE_LOG(_error, "Missing file header.");
    return PFILE_FAILED;
  }
  return PFILE_OK;
}

int FileReader::getHeader(Header& header) {
  PFILE_LOG(_debug, "");
  if (_stream == nullptr) {
    PFILE_LOG(_error, "File not open.");
    return PFILE_FAILED;
  }
  if (!_isAhead) fetchHeader();
  _isAhead = false;
  if (_aheadSize < _ahead.size()) {
    if (std::feof(_stream) != 0) {
      PFILE_LOG(_debug, "End of File.");
      return PFILE_END_OF_DATA;
    }
    PFILE_LOG_VALUES(_error, "fread failed when trying to read Header. RC = %d", static_cast<int>(_aheadSize));
    return PFILE_FAILED;
  }
  Marshal::ByteStreamReader in(_ahead.data(), static_cast<uint32_t>(_ahead.size()));
  const Marshal::StreamOpStatus status = header.deserialize(in);
  if (status != Marshal::STREAM_OK) {
    PFILE_LOG_VALUES(_error, "Header deserialization failed.  RC = %d", status);
    return PFILE_FAILED;
  }
  if (crc32Of(_ahead.data(), Header::HDR_CRC_BYTES) != header.hdrCrc) {  // not over the header written once more
    PFILE_LOG(_error, "Header failed crc check.");
    return PFILE_FAILED;
  }
  return PFILE_OK;
}

void FileReader::fetchHeader() {
  _aheadSize = std::fread(_ahead.data(), 1, _ahead.size(), _stream);
  _isAhead = true;
}

int FileReader::read(Section& section, bool uncompress) {
  PFILE_LOG(_debug, "");
  if (_stream == nullptr) {
    PFILE_LOG(_error, "File not open.");
    return PFILE_FAILED;
  }
  const int code = getHeader(section.header);
  if (code != PFILE_OK) return code;
  std::size_t got = 0;
  if (!readPayload(section, got)) {
    PFILE_LOG_VALUES(_error, "fread failed when try to read Header. RC = %d", static_cast<int>(got));
    return PFILE_FAILED;
  }
  return settleSection(section, uncompress, [this] { PFILE_LOG_AS(_error, "read", "Data failed crc check."); });
}

bool FileReader::readPayload(Section& section, std::size_t& got) {
  constexpr uint32_t ALWAYS_BELIEVED = 64 * 1024;
  const uint32_t claimed = section.header.dataSize;
  // A larger claim is checked against what is left of the file.
  std::size_t room = claimed;
  bool inPieces = false;
  if (claimed > ALWAYS_BELIEVED) {
    const std::optional<uint64_t> left = bytesLeft(_stream);
    inPieces = !left;
    room = inPieces ? ALWAYS_BELIEVED : static_cast<std::size_t>(std::min<uint64_t>(*left, claimed));
    // The file has it all: two payloads at once would double the memory. One that may not fit in it is asked for first.
    if (room == claimed && claimed <= Section::MAX_UNCOMPRESSED) section.payload.reset();
  }
  // A sparse file may really be larger than the memory: an unusually large allocation that fails is a failed read.
  std::unique_ptr<unsigned char[]> bytes(room <= ALWAYS_BELIEVED ? new unsigned char[room]
                                                                 : new (std::nothrow) unsigned char[room]);
  if (bytes == nullptr) return false;
  got = std::fread(bytes.get(), 1, room, _stream);
  while (inPieces && got == room && room < claimed) {
    const std::size_t larger = room + std::min<std::size_t>(claimed - room, room);
    std::unique_ptr<unsigned char[]> grown(new (std::nothrow) unsigned char[larger]);
    if (grown == nullptr) return false;
    std::memcpy(grown.get(), bytes.get(), room);
    bytes = std::move(grown);
    got += std::fread(bytes.get() + room, 1, larger - room, _stream);
    room = larger;
  }
  if (got < claimed) return false;
  section.payload.set(claimed, bytes.release(), true);
  section.compressed = false;
  return true;
}

int FileReader::peek(Header& header) {
  PFILE_LOG(_debug, "");
  if (_stream == nullptr) {
    PFILE_LOG(_error, "File not open.");
    return PFILE_FAILED;
  }
  if (!isSeekable()) {
    PFILE_LOG_VALUES(_error, "ftell failed.errno:%d", errno);
    return PFILE_FAILED;
  }
  const int code = getHeader(header);
  _isAhead = code == PFILE_OK;  // for the call that follows: going back would cost a system call and the buffer
  return code;
}

int FileReader::skipNextSection() {
  PFILE_LOG(_debug, "");
  if (_stream == nullptr) {
    PFILE_LOG(_error, "File not open.");
    return PFILE_FAILED;
  }
  Header header;
  const int code = getHeader(header);
  if (code != PFILE_OK) return code;
  const int sought = skip(header.dataSize);
  if (sought != 0) PFILE_LOG_VALUES(_error, "fseek failed.errno:%d", errno);
  return sought;
}

int FileReader::skip(uint32_t size) {
  char few[4096];  // mostly in the buffer already, while fseek() is a system call whatever the distance
  if (size <= sizeof few && isSeekable()) {
    size -= static_cast<uint32_t>(std::fread(few, 1, size, _stream));
    if (size == 0) return 0;
  }
  return fseeko(_stream, static_cast<off_t>(size), SEEK_CUR);  // also past the end of the file
}

bool FileReader::isSeekable() {
  if (!_isSeekable) _isSeekable = ftello(_stream) >= 0;
  return _isSeekable;
}

uint32_t FileReader::recordedLength() const {
  const bool hasWord = _fileHeader && _fileHeader->payload.size() == sizeof(uint32_t);
  return hasWord ? Marshal::loadLittle32(_fileHeader->payload.data()) : 0;
}

int FileReader::close() {
  PFILE_LOG(_debug, "");
  _fileHeader.reset();
  _isAhead = false;
  if (_stream == nullptr) return PFILE_OK;
  const int closed = std::fclose(_stream);
  _stream = nullptr;
  if (closed != 0) PFILE_LOG_VALUES(_error, "fclose failed.errno:%d", errno);
  return closed;
}

}  // namespace PFile
