// Mutates headed records: a wrong marker ends the reading at the header, a wrong length at the end. Both are made right
// most of the time.
#include <random>

#include <libcrossplatform/serialization/Header.h>
#include <libcrossplatform/serialization/WireBytes.h>

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
  std::minstd_rand random(seed);
  size = LLVMFuzzerMutate(data, size, maxSize);
  if (size < Marshal::Header::BYTES || random() % 8 == 0) return size;
  Marshal::storeBig(data, Marshal::Header::MARKER);
  data[2] = Marshal::Header::FORMAT;
  Marshal::storeBig(data + 8, static_cast<uint32_t>(size - Marshal::Header::BYTES));
  return size;
}
