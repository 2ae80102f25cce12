#include <libcrossplatform/common/PFileMemWriter.h>

#include <algorithm>
#include <cstring>

#include <libcrossplatform/common/internal/PFileLog.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace PFile {
namespace {

constexpr char CLASS_NAME[] = "PFileMemWriter";
constexpr char SOURCE[] = "libcrossplatform/common/PFileMemWriter";

}  // namespace

MemWriter::MemWriter(LogCallback debug, LogCallback warning, LogCallback error)
    : _debug(debug), _warning(warning), _error(error) {
  PFILE_LOG(_debug, "");
}

MemWriter::~MemWriter() {
  (void)close();
}

int MemWriter::open(unsigned char* buffer, unsigned int size) {
  PFILE_LOG_VALUES(_debug, "PFileMemWriter::open(%p, %d)", static_cast<void*>(buffer), static_cast<int>(size));
  if (_buffer != nullptr) {
    PFILE_LOG(_error, "Buffer already set.");
    return PFILE_FAILED;
  }
  _index = 0;
  _buffer = buffer;
  _capacity = size;
  _fileHeader = std::make_unique<Section>(_debug, _warning, _error);
  // As for a file: the payload is the mark itself, and only close() makes its CRC right.
  (void)_fileHeader->set(FILE_HEADER_TYPE, FILE_HEADER_VERSION, 0, _markBytes.data(),
                         static_cast<unsigned>(_markBytes.size()), false, FILE_HEADER_LEVEL);
  return write(*_fileHeader);
}

int MemWriter::write(unsigned char const* data, unsigned int n) {
  PFILE_LOG(_debug, "");
  if (data == nullptr) {
    PFILE_LOG(_error, "Source Pointer is NULL.");
    return PFILE_FAILED;
  }
  if (_buffer == nullptr) {
    PFILE_LOG(_error, "Buffer not set.");
    return PFILE_FAILED;
  }
  const uint32_t remaining = _index < _capacity ? _capacity - _index : 0;
  if (n > remaining) {
    PFILE_LOG_VALUES(_error, "Requested to write %d bytes, only %d bytes remaining.", static_cast<int>(n),
                     static_cast<int>(remaining));
    return PFILE_FAILED;
  }
  std::memcpy(_buffer + _index, data, n);
  _index += n;
  setMark(std::max(_mark, _index));
  return PFILE_OK;
}

int MemWriter::write(Section& section) {
  PFILE_LOG(_debug, "");
  if (section.payload.empty()) {
    PFILE_LOG_VALUES(_error, "Invalid Section Parameters. pData = %p size = %d",
                     static_cast<void const*>(section.payload.data()), static_cast<int>(section.payload.size()));
    return PFILE_OK;  // unlike FileWriter: callers skip empty sections this way
  }
  if (!section.compressed && section.compressable()) {
    const int code = section.compressData();
    if (code != PFILE_OK) return code;
    section.header.updateData(section.payload.size(), section.payload.data());
  }
  const int code = write(section.header.bytes().data(), Header::BYTES);
  return code != PFILE_OK ? code : write(section.payload.data(), section.payload.size());
}

int MemWriter::close() {
  PFILE_LOG(_debug, "");
  if (_buffer == nullptr || _fileHeader == nullptr) return PFILE_FAILED;
  const auto markSize = static_cast<unsigned>(_markBytes.size());
  _fileHeader->header.updateData(markSize, _markBytes.data());
  _index = 0;
  int code = write(_fileHeader->header.bytes().data(), Header::BYTES);
  if (code != PFILE_OK) {
    PFILE_LOG_VALUES(_error, "Failed to write section header. RC = %d", code);
  } else {
    code = write(_markBytes.data(), markSize);
    if (code != PFILE_OK) PFILE_LOG_VALUES(_error, "Failed to write section data. RC = %d", code);
  }
  _fileHeader.reset();
  _buffer = nullptr;
  _capacity = 0;
  _index = 0;
  setMark(0);
  return code;
}

void MemWriter::setMark(uint32_t mark) {
  _mark = mark;
  Marshal::storeLittle32(_markBytes.data(), mark);
}

}  // namespace PFile
