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

class Random {
 public:
  explicit Random(unsigned seed) : _engine(seed) {}
  std::size_t below(std::size_t n) { return n == 0 ? 0 : _engine() % n; }
  bool oneIn(std::size_t n) { return below(n) == 0; }
  template <class T, std::size_t N>
  T oneOf(const T (&values)[N]) {
    return values[below(N)];
  }
  auto oneOf(std::vector<Image::Section>& sections) {
    return sections.begin() + static_cast<std::ptrdiff_t>(below(sections.size()));
  }

 private:
  std::minstd_rand _engine;
};

bool beginsWith(const uint8_t* data, std::size_t size, uint16_t word) {
  return size >= sizeof word && Marshal::loadBig<uint16_t>(data) == word;
}

/// A record whose length is wrong is given up at its end: most of the time the length is made right.
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
  const auto any = static_cast<uint16_t>(random.below(65536));
  switch (random.below(5)) {
    case 0:
      header.type = random.oneIn(4) ? any : random.oneOf(TYPES);
      break;
    case 1:
      header.version = static_cast<uint16_t>(random.below(14));
      break;
    case 2:
      header.flags = static_cast<uint16_t>(header.flags ^ PFile::SECTION_FLAG_COMPRESS);
      break;
    case 3:
      header.flags = any;
      break;
    default:
      header.magic = random.oneIn(2) ? any : PFile::Header::MAGIC;
  }
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
  Image::Section* section = &*random.oneOf(image.sections);
  const auto setWord = [&](uint32_t value) {
    Marshal::storeLittle32(section->payload.data(), value);
    section->header.dataCrc = PFile::crc32Of(section->payload.data(), static_cast<uint32_t>(section->payload.size()));
  };
  switch (random.below(6)) {
    case 0:
      section->header.dataSize = random.oneIn(2) ? random.oneOf(SIZES) : static_cast<uint32_t>(random.below(200));
      break;
    case 1:
      section->header.dataCrc ^= 1;
      break;
    case 2:  // the claim of a compressed payload, or the total length
      if (section->payload.size() >= WORD) setWord(random.oneIn(8) ? 0x800000 : random.oneOf(SIZES));
      break;
    case 3: {  // never closed: the CRC-32 is that of the total less the file header's own 20 bytes
      section = &image.sections[0];
      if (section->payload.size() != WORD) return;
      const uint32_t total = Marshal::loadLittle32(section->payload.data());
      setWord(total - PFile::Header::BYTES);
      Marshal::storeLittle32(section->payload.data(), total);
      break;
    }
    case 4:
      image.rest.resize(random.below(40), 'P');
      return;
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
  switch (random.below(10)) {
    case 0:
    case 1:
      mutateHeader(section->header, random);
      break;
    case 2:
    case 3:
      mutateCompressed(*section, room, random);
      break;
    case 4:
      std::swap(*section, *random.oneOf(image.sections));
      break;
    case 5:
      image.sections.insert(section, Image::Section(*random.oneOf(image.sections)));
      break;
    case 6:
      image.sections.erase(section);
      break;
    default:
      mutateBytes(section->payload, room, random);
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
