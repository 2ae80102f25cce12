#include <libcrossplatform/common/PFileWriter.h>

#include <unistd.h>

#include <cerrno>

#include <libcrossplatform/common/internal/PFileLog.h>
#include <libcrossplatform/common/internal/PFileStdio.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace PFile {
namespace {

constexpr char CLASS_NAME[] = "PFileWriter";
constexpr char SOURCE[] = "libcrossplatform/common/PFileWriter";
constexpr char CLOSE[] = "close";  // the method name that its two halves log

/// Leaves the reason of the first of several failures in errno, whatever is called after it.
class FirstFailure {
 public:
  FirstFailure() = default;
  FirstFailure(const FirstFailure&) = delete;
  FirstFailure& operator=(const FirstFailure&) = delete;
  ~FirstFailure() {
    if (_failed) errno = _why;
  }
  void note() {
    if (!_failed) _why = errno;
    _failed = true;
  }
  int code() const { return _failed ? PFILE_FAILED : PFILE_OK; }

 private:
  bool _failed = false;
  int _why = 0;
};

}  // namespace

FileWriter::FileWriter(LogCallback debug, LogCallback error) : _debug(debug), _error(error) {
  PFILE_LOG(_debug, "");
}

FileWriter::~FileWriter() {
  PFILE_LOG(_debug, "");
  (void)close(false);
}

int FileWriter::open(char const* path) {
  PFILE_LOG_VALUES(_debug, "PFileWriter::open(%s)", path != nullptr ? path : "(null)");
  if (_stream != nullptr) {
    PFILE_LOG(_error, "Already have another file open.");
    return PFILE_FAILED;
  }
  if (path == nullptr) {
    PFILE_LOG(_error, "File Path is NULL.");
    return PFILE_FAILED;
  }
  std::FILE* const stream = std::fopen(path, "wb");
  if (stream == nullptr) {
    if (isDirectory(path)) {
      PFILE_LOG(_error, "Trying to open a directory.");
    } else {
      PFILE_LOG_VALUES(_error, "fopen failed.errno:%d", errno);
    }
    return PFILE_FAILED;
  }
  return start(stream);
}

/// Begins a file in an empty stream, which it closes.
int FileWriter::start(std::FILE* stream) {
  _stream = stream;
  useBuffer(_stream, _stdioBuffer, LARGE_BUFFER_BYTES);
  _fileHeader = std::make_unique<Section>(_debug, _error, _error);
  // The payload is the running total itself: it is 20 when it is written after its header, whose CRC was taken
  // over the earlier total. close() corrects that; until then the file does not verify.
  (void)_fileHeader->set(FILE_HEADER_TYPE, FILE_HEADER_VERSION, 0, _totalBytes.data(),
                         static_cast<unsigned>(_totalBytes.size()), false, FILE_HEADER_LEVEL);
  return write(*_fileHeader);
}

int FileWriter::write(Section& section) {
  PFILE_LOG(_debug, "");
  if (_stream == nullptr) {
    PFILE_LOG(_error, "File not open.");
    return PFILE_FAILED;
  }
  if (section.payload.empty()) {
    PFILE_LOG_VALUES(_error, "Invalid Section Parameters. pData = %p size = %d",
                     static_cast<void const*>(section.payload.data()), static_cast<int>(section.payload.size()));
    return PFILE_FAILED;
  }
  if (!section.compressed && section.compressable()) {
    const int code = section.compressData();
    if (code != PFILE_OK) return code;
    section.header.updateData(section.payload.size(), section.payload.data());
  }
  if (!append(section.header.bytes().data(), Header::BYTES)) {
    PFILE_LOG_VALUES(_error, "fwrite failed when writing section header.errno:%d", errno);
    return PFILE_FAILED;
  }
  addToTotal(Header::BYTES, "fileSizeWithHeader >= headerBytes");
  if (!append(section.payload.data(), section.payload.size())) {
    PFILE_LOG_VALUES(_error, "fwrite failed when writing section data.errno:%d", errno);
    return PFILE_FAILED;
  }
  addToTotal(section.payload.size(), "fileSizeWithSection >= sectionBytes");
  return PFILE_OK;
}

int FileWriter::close(bool sync) {
  PFILE_LOG(_debug, "");
  FirstFailure failure;
  if (_stream != nullptr && _fileHeader != nullptr) {
    if (writeTotal() != PFILE_OK) failure.note();
    if (sync && syncToDisk() != PFILE_OK) failure.note();
  }
  if (_stream != nullptr) {
    const int closed = std::fclose(_stream);
    _stream = nullptr;
    if (closed != 0) {
      failure.note();
      PFILE_LOG_VALUES(_error, "fclose failed.errno:%d", errno);
    }
  }
  _fileHeader.reset();
  return failure.code();
}

int FileWriter::writeTotal() {
  FirstFailure failure;
  _fileHeader->header.updateData(static_cast<unsigned>(_totalBytes.size()), _totalBytes.data());
  if (std::fflush(_stream) != 0) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "fflush failed.errno:%d", errno);
  }
  errno = 0;  // the only way rewind() reports a failure, for example on a pipe
  std::rewind(_stream);
  if (errno != 0 && failure.code() == PFILE_OK) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "rewind failed.errno:%d", errno);
  }
  if (!append(_fileHeader->header.bytes().data(), Header::BYTES)) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "fwrite failed when writing section header.errno:%d", errno);
  }
  if (!append(_totalBytes.data(), static_cast<uint32_t>(_totalBytes.size()))) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "fwrite failed when writing section data.errno:%d", errno);
  }
  return failure.code();
}

int FileWriter::syncToDisk() {
  FirstFailure failure;
  if (std::fflush(_stream) != 0) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "fflush failed.errno:%d", errno);
  }
  const int descriptor = fileno(_stream);
  if (descriptor == -1) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "fileno failed.errno:%d", errno);
    return failure.code();
  }
  if (fsync(descriptor) != 0) {
    failure.note();
    PFILE_LOG_VALUES_AS(_error, CLOSE, "fsync failed.errno:%d", errno);
  }
  return failure.code();
}

bool FileWriter::append(void const* data, uint32_t size) {
  return std::fwrite(data, 1, size, _stream) == size;
}

void FileWriter::addToTotal(uint32_t bytes, char const* wrapExpression) {
  _total += bytes;
  if (_total < bytes) Veltra::assertFatal(wrapExpression, SOURCE, __LINE__);
  Marshal::storeLittle32(_totalBytes.data(), _total);
}

}  // namespace PFile
