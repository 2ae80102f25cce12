#include <libcrossplatform/common/PFileSection.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <zlib.h>

#include <libcrossplatform/common/internal/Inflate.h>
#include <libcrossplatform/common/internal/PFileLog.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace PFile {
namespace {

constexpr char CLASS_NAME[] = "Section";
constexpr char SOURCE[] = "libcrossplatform/common/PFileSection";

constexpr uint32_t SIZE_WORD = sizeof(uint32_t);  // the original size before the zlib stream

/// The buffer size given to compression. Not zlib's own compressBound(): files are compared byte for byte, and the
/// retry depends on it.
uint64_t compressionBound(uint32_t size) {
  return static_cast<uint64_t>(std::fma(static_cast<double>(size), 1.001, 12.0));
}

}  // namespace

Section::Section(LogCallback debugLog, LogCallback warningLog, LogCallback errorLog)
    : debug(debugLog), warning(warningLog), error(errorLog) {
  PFILE_LOG(debug, "");
}

int Section::set(unsigned short type, unsigned short version, SECTION_FLAGS flags, unsigned char* data,
                 unsigned int size, bool owned, int compLevel) {
  PFILE_LOG(debug, "");
  payload.set(size, data, owned);
  compressed = false;
  int level = 0;
  if ((flags & SECTION_FLAG_COMPRESS) != 0) {
    level = compLevel;
    header.storeCompLevel(compLevel);
    if (compressData() != PFILE_OK) return PFILE_FAILED;
  }
  header.set(type, version, flags, level, payload.size(), payload.data());
  return PFILE_OK;
}

int Section::compressData() {
  PFILE_LOG(debug, "");
  if (compressed) {
    PFILE_LOG(error, "Data is already compressed.");
    return PFILE_FAILED;
  }
  if (payload.empty()) {
    PFILE_LOG(error, "Section data is not set.");
    return PFILE_FAILED;
  }
  const uint32_t originalSize = payload.size();
  const uint64_t bound = compressionBound(originalSize);
  int code = Z_MEM_ERROR;
  std::unique_ptr<unsigned char[]> buffer;
  uLongf compressedSize = 0;
  if (bound <= std::numeric_limits<uint32_t>::max() - SIZE_WORD) {
    compressedSize = static_cast<uLongf>(bound);
    buffer.reset(new unsigned char[compressedSize + SIZE_WORD]);
    Marshal::storeLittle32(buffer.get(), originalSize);
    code = compress2(buffer.get() + SIZE_WORD, &compressedSize, payload.data(), originalSize, header.getCompLevel());
  }
  if (code != Z_OK) PFILE_LOG_VALUES(warning, "First compression attempt failed. compress2 returned %d", code);
  if (code == Z_BUF_ERROR) {
    PFILE_LOG(warning, "Destination Buffer is too small. Trying again, doubling the size");
    // Two quirks that files depend on: the array has no room of its own for the original size, and the size is not
    // stored again, so it reads as 0. zlib is told the room that is really left after the word.
    const uLongf capacity = compressedSize > std::numeric_limits<uint32_t>::max() / 2 ? 0 : 2 * compressedSize;
    buffer = std::make_unique<unsigned char[]>(std::max<uLongf>(capacity, SIZE_WORD));
    compressedSize = capacity > SIZE_WORD ? capacity - SIZE_WORD : 0;
    code = compress2(buffer.get() + SIZE_WORD, &compressedSize, payload.data(), originalSize, header.getCompLevel());
    if (code != Z_OK) PFILE_LOG_VALUES(error, "Second compression attempt failed.  compress2 returned %d", code);
  }
  if (code != Z_OK) {
    PFILE_LOG_VALUES(error, "Compression Failed.  RC = %d", code);
    return PFILE_FAILED;
  }
  PFILE_LOG_VALUES(debug, "Original Data Size:%d Compressed Data Size:%d", static_cast<int>(originalSize),
                   static_cast<int>(compressedSize));
  // Kept compressed anyway: readers expect it because of the flag.
  if (originalSize <= compressedSize) {
    PFILE_LOG_VALUES(warning, "Original size is less than or equal to compressed size.  Original:%d Compressed:%d",
                     static_cast<int>(originalSize), static_cast<int>(compressedSize));
  }
  payload.set(static_cast<uint32_t>(compressedSize) + SIZE_WORD, buffer.release(), true);
  compressed = true;
  return PFILE_OK;
}

int Section::uncompressData() {
  PFILE_LOG(debug, "");
  if (!compressed) {
    PFILE_LOG(error, "Data is already uncompressed.");
    return PFILE_FAILED;
  }
  if (payload.empty()) {
    PFILE_LOG(error, "Section data is not set.");
    return PFILE_FAILED;
  }
  if (payload.size() < SIZE_WORD) {  // the code zlib gives for a stream without bytes
    PFILE_LOG_VALUES(error, "uncompress returned %d", Z_DATA_ERROR);
    return PFILE_FAILED;
  }
  const uint32_t originalSize = Marshal::loadLittle32(payload.data());
  if (originalSize > MAX_UNCOMPRESSED) {
    PFILE_LOG(error, "Section data too big.");
    return PFILE_FAILED;
  }
  std::unique_ptr<unsigned char[]> buffer(new unsigned char[originalSize]);
  uLongf size = originalSize;
  const int code = inflateWhole(buffer.get(), size, payload.data() + SIZE_WORD, payload.size() - SIZE_WORD);
  if (code != Z_OK) {
    PFILE_LOG_VALUES(error, "uncompress returned %d", code);
    return PFILE_FAILED;
  }
  payload.set(static_cast<uint32_t>(size), buffer.release(), true);
  compressed = false;
  return PFILE_OK;
}

bool Section::verifyDataCrc() const {
  PFILE_LOG(debug, "");
  if (payload.empty()) {
    PFILE_LOG(error, "Data not initialized.");
    return false;
  }
  const uint32_t crc = crc32Of(payload.data(), payload.size());
  PFILE_LOG_VALUES(debug, "Calculated CRC: %d, Stored CRC: %d", static_cast<int>(crc),
                   static_cast<int>(header.dataCrc));
  return crc == header.dataCrc;
}

bool Section::operator==(const Section& other) const {
  return header == other.header && payload == other.payload;
}

void Section::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  formatter.beginObject("Section");
  header.dump(formatter, flags);
  if (flags.level == Dump::DumpFlags::FULL_LEVEL) payload.dump(formatter, flags);
  formatter.endObject();
}

}  // namespace PFile
