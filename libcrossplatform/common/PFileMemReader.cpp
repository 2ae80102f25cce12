#include <libcrossplatform/common/PFileMemReader.h>

#include <cerrno>
#include <limits>

#include <libcrossplatform/common/internal/PFileLog.h>
#include <libcrossplatform/common/internal/PFileRead.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace PFile {
namespace {

constexpr char CLASS_NAME[] = "PFileMemReader";
constexpr char SOURCE[] = "libcrossplatform/common/PFileMemReader";

/// Sizes and positions are signed in the interface: larger ones are refused.
bool isNegative(uint32_t size) {
  return size > static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
}

}  // namespace

MemReader::MemReader(LogCallback debug, LogCallback warning, LogCallback error)
    : _debug(debug), _warning(warning), _error(error) {
  PFILE_LOG(_debug, "");
}

MemReader::~MemReader() {
  close();
}

int MemReader::open(unsigned char const* buffer, unsigned int size) {
  PFILE_LOG_VALUES(_debug, "PFileMemReader::open(%p, %d)", static_cast<void const*>(buffer), static_cast<int>(size));
  const int code = openImage(buffer, size, __func__);
  if (code != PFILE_OK) return code;
  if (_fileHeader->payload.size() < sizeof(uint32_t)) {
    PFILE_LOG(_error, "Missing file header.");
    return PFILE_FAILED;
  }
  const uint32_t recorded = Marshal::loadLittle32(_fileHeader->payload.data());
  if (recorded > _size) {
    PFILE_LOG_VALUES(_error, "File is longer than the buffer we've been given.  File Size:%d, Buffer Size:%d",
                     static_cast<int>(recorded), static_cast<int>(_size));
    _buffer = nullptr;
    _size = 0;
    _index = 0;
    return PFILE_FAILED;
  }
  _size = recorded;
  return PFILE_OK;
}

int MemReader::quickOpen(unsigned char const* buffer, unsigned int size) {
  PFILE_LOG_VALUES(_debug, "PFileMemReader::open(%p, %d)", static_cast<void const*>(buffer), static_cast<int>(size));
  return openImage(buffer, size, __func__);
}

int MemReader::openImage(unsigned char const* buffer, unsigned int size, char const* method) {
  if (_buffer != nullptr) {
    PFILE_LOG_AS(_error, method, "Buffer already set.");
    return PFILE_FAILED;
  }
  _buffer = buffer;
  _size = size;
  _index = 0;
  _fileHeader.emplace(_debug, _warning, _error);
  const int code = read(*_fileHeader, true);
  if (code != PFILE_OK) return code;
  if (_fileHeader->header.type != FILE_HEADER_TYPE) {
    PFILE_LOG_AS(_error, method, "Missing file header.");
    return PFILE_FAILED;
  }
  return PFILE_OK;
}

int MemReader::getHeader(Header& header) {
  PFILE_LOG(_debug, "");
  if (_buffer == nullptr || _index >= _size) {
    PFILE_LOG(_debug, "End of File.");
    return PFILE_END_OF_DATA;
  }
  Marshal::ByteStreamReader in(_buffer + _index, _size - _index);
  const Marshal::StreamOpStatus status = header.deserialize(in);
  if (status != Marshal::STREAM_OK) {
    PFILE_LOG_VALUES(_error, "Header deserialization failed.  RC = %d", status);
    return PFILE_FAILED;
  }
  if (crc32Of(_buffer + _index, Header::HDR_CRC_BYTES) != header.hdrCrc) {  // not over the header written once more
    PFILE_LOG(_error, "Header failed crc check.");
    return PFILE_FAILED;
  }
  const int sought = seek(static_cast<int>(in.position()), Marshal::STREAM_FROM_CURRENT);
  if (sought < 0) {
    PFILE_LOG_VALUES(_error, "Seek Failed. RC = %d", sought);
    return PFILE_FAILED;
  }
  return PFILE_OK;
}

int MemReader::read(Section& section, bool uncompress) {
  PFILE_LOG(_debug, "");
  if (_buffer == nullptr) {
    PFILE_LOG(_error, "Buffer not set.");
    return PFILE_FAILED;
  }
  const int code = getHeader(section.header);
  if (code != PFILE_OK) return code;
  PFILE_LOG(_debug, "Getting the section data.");
  const uint32_t size = section.header.dataSize;
  const uint32_t remaining = _index < _size ? _size - _index : 0;
  if (size > remaining) {
    PFILE_LOG_VALUES(_error, "Insufficient Space Remaining. Need %d bytes, only %d bytes remaining.",
                     static_cast<int>(size), static_cast<int>(remaining));
    // Success, with the header consumed and the payload unchanged: readers of cut images rely on it.
    return PFILE_OK;
  }
  section.payload.set(size, _buffer + _index, false);
  section.compressed = false;
  if (isNegative(size) || seek(static_cast<int>(size), Marshal::STREAM_FROM_CURRENT) < 0) return PFILE_FAILED;
  return settleSection(section, uncompress, [this] { PFILE_LOG_AS(_error, "read", "Data failed crc check."); });
}

int MemReader::peek(Header& header) {
  PFILE_LOG(_debug, "");
  if (_buffer == nullptr) {
    PFILE_LOG(_error, "Buffer not set.");
    return PFILE_FAILED;
  }
  const int saved = seek(0, Marshal::STREAM_FROM_CURRENT);
  if (saved < 0) {
    PFILE_LOG_VALUES(_error, "seek failed.errno:%d", errno);
    return PFILE_FAILED;
  }
  const int code = getHeader(header);
  if (code != PFILE_OK) return code;
  if (seek(saved, Marshal::STREAM_FROM_BEGIN) < 0) {
    PFILE_LOG_VALUES(_error, "seek failed.errno:%d", errno);
    return PFILE_FAILED;
  }
  return PFILE_OK;
}

int MemReader::skipNextSection() {
  PFILE_LOG(_debug, "");
  if (_buffer == nullptr) {
    PFILE_LOG(_error, "Buffer not set.");
    return PFILE_FAILED;
  }
  Header header;
  const int code = getHeader(header);
  if (code != PFILE_OK) return code;
  if (!isNegative(header.dataSize) && seek(static_cast<int>(header.dataSize), Marshal::STREAM_FROM_CURRENT) >= 0) {
    return PFILE_OK;
  }
  PFILE_LOG_VALUES(_error, "seek failed.errno:%d", errno);
  return PFILE_FAILED;
}

int MemReader::seek(int offset, StreamPosition whence) {
  PFILE_LOG_VALUES(_debug, "seek(%d, %d);", offset, static_cast<int>(whence));
  const uint32_t bases[] = {0, _index, _size};
  if (whence < Marshal::STREAM_FROM_BEGIN || whence > Marshal::STREAM_FROM_END) {
    PFILE_LOG_VALUES(_error, "Unknown StreamPosition arg: %d", static_cast<int>(whence));
    return PFILE_FAILED;
  }
  const int64_t position = static_cast<int64_t>(bases[whence]) + offset;
  if (position < 0 || position > _size || isNegative(static_cast<uint32_t>(position))) {
    PFILE_LOG_VALUES(_error, "New index value is out of range.  New:%d, Size:%u Current: %u Offset: %ierrno:%d",
                     static_cast<int>(position), _size, _index, offset, errno);
    return PFILE_FAILED;
  }
  _index = static_cast<uint32_t>(position);
  return static_cast<int>(position);
}

void MemReader::close() {
  PFILE_LOG(_debug, "");
  _fileHeader.reset();
  _buffer = nullptr;
  _size = 0;
  _index = 0;
}

}  // namespace PFile
