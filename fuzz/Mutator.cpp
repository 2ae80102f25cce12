// Mutates the payload or the header of one section, or what begins as a headed record, and makes sizes, both CRC-32 and
// lengths right again: plain mutations would all end at a CRC-32 or a wrong length. One time in four a header keeps
// what it claims, under a right CRC-32. Anything else is mutated as bytes.
#include <algorithm>
#include <random>

#include <libcrossplatform/serialization/Header.h>

#include "ContainerImage.h"

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed);

namespace {

using Fuzz::Bytes;

bool beginsWith(const uint8_t* data, std::size_t size, uint16_t word) {
  return size >= sizeof word && Marshal::loadBig<uint16_t>(data) == word;
}

/// Readers reject a record with a wrong length, so most of the time the length is corrected.
std::size_t mutate(uint8_t* data, std::size_t size, std::size_t maxSize, bool keepsLength) {
  const bool isRecord = beginsWith(data, size, Marshal::Header::MARKER);
  size = LLVMFuzzerMutate(data, size, maxSize);
  if (!isRecord || keepsLength || size < Marshal::Header::BYTES) return size;
  Marshal::storeBig(data, Marshal::Header::MARKER);
  data[2] = Marshal::Header::FORMAT;
  Marshal::storeBig(data + 8, static_cast<uint32_t>(size - Marshal::Header::BYTES));
  return size;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
  std::minstd_rand random(seed);
  const auto oneIn = [&random](unsigned n) { return random() % n == 0; };
  Fuzz::Image image(data, size);
  if (!beginsWith(data, size, PFile::Header::MAGIC) || image.sections.empty() || oneIn(16)) {
    return mutate(data, size, maxSize, oneIn(8));
  }
  const std::size_t at = random() % image.sections.size();
  if (oneIn(8)) {
    image.sections.push_back(Fuzz::Image::Section(image.sections[at]));
  } else if (oneIn(3)) {
    auto header = image.sections[at].header.bytes();
    LLVMFuzzerMutate(header.data(), header.size(), header.size());
    Marshal::ByteStreamReader in(header.data(), PFile::Header::BYTES);
    (void)image.sections[at].header.deserialize(in);
  } else {
    Bytes& payload = image.sections[at].payload;
    const std::size_t before = payload.size();
    payload.resize(before + (maxSize > size ? std::min<std::size_t>(maxSize - size, before + 64) : 1));
    payload.resize(mutate(payload.data(), before, payload.size(), oneIn(8)));
  }
  if (oneIn(4)) {
    image.sections[at].header.hdrCrc =
        PFile::crc32Of(image.sections[at].header.bytes().data(), PFile::Header::HDR_CRC_BYTES);
  } else {
    image.repair();
  }
  const Bytes bytes = image.bytes();
  size = std::min(bytes.size(), maxSize);
  std::copy_n(bytes.begin(), size, data);
  return size;
}
