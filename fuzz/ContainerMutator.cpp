// Mutates containers as containers: plain mutations would all end at a CRC-32. What was changed is made right again,
// most of the time.
#include <algorithm>
#include <cstring>
#include <random>

#include <zlib.h>

#include <libcrossplatform/common/PFileSection.h>
#include <libcrossplatform/serialization/Header.h>
#include <libcrossplatform/serialization/WireBytes.h>

#include "ContainerImage.h"

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed);
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const uint8_t* a, std::size_t sizeA, const uint8_t* b,
                                                 std::size_t sizeB, uint8_t* out, std::size_t maxSize, unsigned seed);

namespace {

using Fuzz::Bytes;
using Fuzz::Image;
using Fuzz::ImageSection;

class Random {
 public:
  explicit Random(unsigned seed) : _engine(seed) {}
  std::size_t below(std::size_t n) { return n == 0 ? 0 : _engine() % n; }
  bool oneIn(std::size_t n) { return below(n) == 0; }
  template <class T, std::size_t N>
  T oneOf(const T (&values)[N]) {
    return values[below(N)];
  }

 private:
  std::minstd_rand _engine;
};

ImageSection& anySection(Image& image, Random& random) {
  return image.sections[random.below(image.sections.size())];
}

void mutateBytes(Bytes& bytes, std::size_t maxSize) {
  const std::size_t size = bytes.size();
  bytes.resize(std::max<std::size_t>(size + 64, 128));
  bytes.resize(LLVMFuzzerMutate(bytes.data(), size, std::min(bytes.size(), std::max<std::size_t>(maxSize, 1))));
}

/// A record whose length is wrong is given up at its end: most of the time the length is made right.
void repairRecord(Bytes& payload, Random& random) {
  if (payload.size() < Marshal::Header::BYTES || random.oneIn(8)) return;
  if (Marshal::loadBig<uint16_t>(payload.data()) != Marshal::Header::MARKER) return;
  Marshal::storeBig(&payload[8], static_cast<uint32_t>(payload.size() - Marshal::Header::BYTES));
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

Bytes deflated(const Bytes& plain) {
  uLongf size = compressBound(plain.size());
  Bytes stored(sizeof(uint32_t) + size);
  Marshal::storeLittle32(stored.data(), static_cast<uint32_t>(plain.size()));
  compress2(&stored[sizeof(uint32_t)], &size, plain.data(), plain.size(), 6);
  stored.resize(sizeof(uint32_t) + size);
  return stored;
}

/// Changes what a compressed payload holds, or makes a payload compressed.
void mutateCompressed(ImageSection& section, std::size_t maxSize, Random& random) {
  Bytes plain = section.payload;
  if ((section.header.flags & PFile::SECTION_FLAG_COMPRESS) != 0 && plain.size() > sizeof(uint32_t)) {
    plain.resize(Fuzz::INPUT_LIMIT);
    uLongf size = plain.size();
    const std::size_t stream = section.payload.size() - sizeof(uint32_t);
    if (uncompress(plain.data(), &size, &section.payload[sizeof(uint32_t)], stream) != Z_OK) size = 0;
    plain.resize(size);
  }
  mutateBytes(plain, maxSize);
  repairRecord(plain, random);
  section.payload = deflated(plain);
  section.header.flags |= PFile::SECTION_FLAG_COMPRESS;
}

void mutateOrder(Image& image, Random& random) {
  const std::size_t a = random.below(image.sections.size()), b = random.below(image.sections.size());
  const ImageSection copy = image.sections[a];
  const auto at = image.sections.begin() + static_cast<std::ptrdiff_t>(b);
  switch (random.below(3)) {
    case 0:
      std::swap(image.sections[a], image.sections[b]);
      break;
    case 1:
      image.sections.insert(at, copy);
      break;
    default:
      image.sections.erase(at);
  }
}

/// Headers that verify and lie, a file that was never closed, bytes after the end. After the repair.
void damage(Image& image, Random& random) {
  constexpr uint32_t SIZES[] = {0, 1, 19, 0x7FFFFFFF, 0x80000000, 0xFFFFFFEC, 0xFFFFFFFF};
  if (image.sections.empty()) return;
  ImageSection& section = anySection(image, random);
  switch (random.below(6)) {
    case 0:
      section.header.dataSize = random.oneIn(2) ? random.oneOf(SIZES) : static_cast<uint32_t>(random.below(200));
      break;
    case 1:
      section.header.dataCrc ^= 1;
      break;
    case 2:  // the claim of a compressed payload, or the total length
      if (section.payload.size() < sizeof(uint32_t)) return;
      Marshal::storeLittle32(section.payload.data(), random.oneIn(8) ? 0x800000 : random.oneOf(SIZES));
      section.header.dataCrc = PFile::crc32Of(section.payload.data(), static_cast<uint32_t>(section.payload.size()));
      break;
    case 3: {  // never closed: the CRC-32 is that of the total less the file header's own 20 bytes
      Bytes mark = image.sections[0].payload;
      if (mark.size() != sizeof(uint32_t)) return;
      Marshal::storeLittle32(mark.data(), Marshal::loadLittle32(mark.data()) - PFile::Header::BYTES);
      image.sections[0].header.dataCrc = PFile::crc32Of(mark.data(), static_cast<uint32_t>(mark.size()));
      Fuzz::repairHeader(image.sections[0].header);
      return;
    }
    case 4:
      image.rest.resize(random.below(40), 'P');
      return;
    default:
      section.payload.resize(random.below(section.payload.size() + 1));
  }
  Fuzz::repairHeader(section.header);
}

/// Repairs an image, damages it again now and then, and hands over its bytes.
std::size_t give(Image& image, uint8_t* data, std::size_t maxSize, Random& random) {
  // More sections would reach nothing new, and take time.
  constexpr std::size_t MOST_SECTIONS = 12;
  if (image.sections.size() > MOST_SECTIONS) image.sections.resize(MOST_SECTIONS);
  Fuzz::repairImage(image);
  if (random.oneIn(4)) damage(image, random);
  const Bytes bytes = Fuzz::joinImage(image);
  const std::size_t size = std::min(bytes.size(), maxSize);
  std::copy_n(bytes.begin(), size, data);
  return size;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
  Random random(seed);
  if (random.oneIn(16)) return LLVMFuzzerMutate(data, size, maxSize);
  Image image = Fuzz::parseImage(data, size);
  if (image.sections.empty()) image.sections.resize(1);
  const std::size_t room = maxSize > size ? maxSize - size : 1;
  ImageSection& section = anySection(image, random);
  switch (random.below(5)) {
    case 0:
      mutateHeader(section.header, random);
      break;
    case 1:
    case 2:
      mutateBytes(section.payload, section.payload.size() + room);
      repairRecord(section.payload, random);
      break;
    case 3:
      mutateCompressed(section, section.payload.size() + room, random);
      break;
    default:
      mutateOrder(image, random);
  }
  return give(image, data, maxSize, random);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const uint8_t* a, std::size_t sizeA, const uint8_t* b,
                                                 std::size_t sizeB, uint8_t* out, std::size_t maxSize, unsigned seed) {
  Random random(seed);
  Image image = Fuzz::parseImage(a, sizeA);
  const Image other = Fuzz::parseImage(b, sizeB);
  for (const ImageSection& section : other.sections) {
    if (random.oneIn(2)) continue;
    const std::size_t at = random.below(image.sections.size() + 1);
    image.sections.insert(image.sections.begin() + static_cast<std::ptrdiff_t>(at), section);
  }
  return give(image, out, maxSize, random);
}
