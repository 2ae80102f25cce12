// Mutates containers as containers, and what begins as a headed record as one: plain mutations would all end at a
// CRC-32 or a wrong length. What was changed is made right again, most of the time. Anything else is mutated as bytes.
#include <algorithm>
#include <random>

#include <zlib.h>

#include <libcrossplatform/serialization/Header.h>

#include "ContainerImage.h"

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed);
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const uint8_t* a, std::size_t sizeA, const uint8_t* b,
                                                 std::size_t sizeB, uint8_t* out, std::size_t maxSize, unsigned seed);

namespace {

using Fuzz::Bytes;
using Fuzz::Image;

constexpr std::size_t WORD = sizeof(uint32_t);

/// Where chance decides.
class Random : std::minstd_rand {
 public:
  using std::minstd_rand::minstd_rand;
  std::size_t below(std::size_t n) { return n == 0 ? 0 : (*this)() % n; }
  bool oneIn(std::size_t n) { return below(n) == 0; }
  template <class Values>
  auto oneOf(Values& values) {
    return std::begin(values) + static_cast<std::ptrdiff_t>(below(std::size(values)));
  }
};

bool beginsWith(const uint8_t* data, std::size_t size, uint16_t word) {
  return size >= sizeof word && Marshal::loadBig<uint16_t>(data) == word;
}

/// Readers reject a record with a wrong length, so most of the time the length is corrected.
void repairRecord(uint8_t* data, std::size_t size, Random& random) {
  if (size < Marshal::Header::BYTES || random.oneIn(8)) return;
  data[2] = Marshal::Header::FORMAT;
  Marshal::storeBig(data + 8, static_cast<uint32_t>(size - Marshal::Header::BYTES));
}

void mutateBytes(Bytes& bytes, std::size_t room, Random& random) {
  const std::size_t size = bytes.size();
  bytes.resize(std::max<std::size_t>(size + 64, 128));
  bytes.resize(LLVMFuzzerMutate(bytes.data(), size, std::min(bytes.size(), size + room)));
  if (beginsWith(bytes.data(), bytes.size(), Marshal::Header::MARKER)) repairRecord(bytes.data(), bytes.size(), random);
}

void mutateHeader(PFile::Header& header, Random& random) {
  constexpr uint16_t TYPES[] = {1, 5, 100, 101, 102, 110, 200, 300, 301, 302, 321, 332, 700, 702, 900, 921, 999};
  struct Field {
    uint16_t& value;
    int usual;
  };
  const Field fields[] = {{header.type, *random.oneOf(TYPES)},
                          {header.version, static_cast<int>(random.below(14))},
                          {header.flags, header.flags ^ PFile::SECTION_FLAG_COMPRESS},
                          {header.magic, PFile::Header::MAGIC}};
  const Field& field = *random.oneOf(fields);
  field.value = static_cast<uint16_t>(random.oneIn(3) ? static_cast<int>(random.below(65536)) : field.usual);
}

/// Changes what a compressed payload holds, or makes a payload compressed.
void mutateCompressed(Image::Section& section, std::size_t room, Random& random) {
  Bytes plain = section.payload;
  if ((section.header.flags & PFile::SECTION_FLAG_COMPRESS) != 0 && plain.size() > WORD) {
    uLongf size = Fuzz::INPUT_LIMIT;
    plain.resize(size);
    if (uncompress(plain.data(), &size, &section.payload[WORD], section.payload.size() - WORD) != Z_OK) size = 0;
    plain.resize(size);
  }
  mutateBytes(plain, room, random);
  uLongf size = compressBound(plain.size());
  section.payload.resize(WORD + size);
  Marshal::storeLittle32(section.payload.data(), static_cast<uint32_t>(plain.size()));
  compress2(&section.payload[WORD], &size, plain.data(), plain.size(), 6);
  section.payload.resize(WORD + size);
  section.header.flags |= PFile::SECTION_FLAG_COMPRESS;
}

/// Headers that verify and lie, a file that was never closed, bytes after the end. After the repair.
void damage(Image& image, Random& random) {
  constexpr uint32_t SIZES[] = {0, 1, 19, 0x7FFFFFFF, 0x80000000, 0xFFFFFFEC, 0xFFFFFFFF};
  if (image.sections.empty()) return;
  auto section = random.oneOf(image.sections);
  const auto setWord = [&](uint32_t value) {
    Marshal::storeLittle32(section->payload.data(), value);
    section->header.dataCrc = PFile::crc32Of(section->payload.data(), static_cast<uint32_t>(section->payload.size()));
  };
  switch (random.below(6)) {
    case 0:
      section->header.dataSize = random.oneIn(2) ? *random.oneOf(SIZES) : static_cast<uint32_t>(random.below(200));
      break;
    case 1:
      section->header.dataCrc ^= 1;
      break;
    case 2:  // the claim of a compressed payload, or the total length
      if (section->payload.size() >= WORD) setWord(random.oneIn(8) ? 0x800000 : *random.oneOf(SIZES));
      break;
    case 3: {  // never closed: the CRC-32 is that of the total less the file header's own 20 bytes
      section = image.sections.begin();
      const Bytes payload = section->payload;
      if (payload.size() != WORD) return;
      setWord(Marshal::loadLittle32(payload.data()) - PFile::Header::BYTES);
      section->payload = payload;
      break;
    }
    case 4:
      return image.rest.resize(random.below(40), 'P');
    default:
      section->payload.resize(random.below(section->payload.size() + 1));
  }
  section->header.hdrCrc = PFile::crc32Of(section->header.bytes().data(), PFile::Header::HDR_CRC_BYTES);
}

/// Repairs an image, damages it again now and then, and hands over its bytes.
std::size_t give(Image& image, uint8_t* data, std::size_t maxSize, Random& random) {
  // More sections would reach nothing new, and take time.
  constexpr std::size_t MOST_SECTIONS = 12;
  if (image.sections.size() > MOST_SECTIONS) image.sections.resize(MOST_SECTIONS);
  image.repair();
  if (random.oneIn(4)) damage(image, random);
  const Bytes bytes = image.bytes();
  const std::size_t size = std::min(bytes.size(), maxSize);
  std::copy_n(bytes.begin(), size, data);
  return size;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
  Random random(seed);
  const bool isRecord = beginsWith(data, size, Marshal::Header::MARKER);
  if (!beginsWith(data, size, PFile::Header::MAGIC) || random.oneIn(16)) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (isRecord && size >= sizeof(uint16_t)) Marshal::storeBig(data, Marshal::Header::MARKER);
    if (isRecord) repairRecord(data, size, random);
    return size;
  }
  Image image(data, size);
  if (image.sections.empty()) image.sections.resize(1);
  const std::size_t room = maxSize > size ? maxSize - size : 1;
  const auto section = random.oneOf(image.sections);
  const std::size_t change = random.below(10);
  if (change < 4) {
    mutateBytes(section->payload, room, random);
  } else if (change < 6) {
    mutateHeader(section->header, random);
  } else if (change < 8) {
    mutateCompressed(*section, room, random);
  } else if (change < 9) {
    image.sections.insert(section, Image::Section(*random.oneOf(image.sections)));
  } else if (random.oneIn(2)) {
    std::swap(*section, *random.oneOf(image.sections));
  } else {
    image.sections.erase(section);
  }
  return give(image, data, maxSize, random);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const uint8_t* a, std::size_t sizeA, const uint8_t* b,
                                                 std::size_t sizeB, uint8_t* out, std::size_t maxSize, unsigned seed) {
  if (!beginsWith(a, sizeA, PFile::Header::MAGIC)) return 0;
  Random random(seed);
  Image image(a, sizeA);
  for (const Image::Section& section : Image(b, sizeB).sections) {
    if (random.oneIn(2)) image.sections.insert(random.oneOf(image.sections), section);
  }
  return give(image, out, maxSize, random);
}
