#include "WorkDone.h"

#include <dlfcn.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>

#include "AllocationFaults.h"

namespace {

WorkDone counted{};

/// The function that this program's own one stands in front of.
template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void WorkDone::start() {
  counted = {};
  Allocations::startMeasuring();
}

WorkDone WorkDone::sinceStart() {
  WorkDone work = counted;
  work.allocations = Allocations::countSinceStart();
  work.peak = Allocations::peak();
  return work;
}

extern "C" {

int uncompress(Bytef* to, uLongf* size, const Bytef* from, uLong length) {
  static const auto original = next<decltype(uncompress)>("uncompress");
  const int code = original(to, size, from, length);
  counted.inflated += *size;
  return code;
}

uLong crc32(uLong crc, const Bytef* bytes, uInt size) {
  static const auto original = next<decltype(crc32)>("crc32");
  counted.checked += size;
  return original(crc, bytes, size);
}

std::size_t fread(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  static const auto original = next<std::size_t(void*, std::size_t, std::size_t, std::FILE*)>("fread");
  const std::size_t got = original(to, size, count, stream);
  counted.read += got * size;
  return got;
}

ssize_t pread(int descriptor, void* to, std::size_t size, off_t offset) {
  static const auto original = next<ssize_t(int, void*, std::size_t, off_t)>(sizeof(off_t) == 8 ? "pread64" : "pread");
  const ssize_t got = original(descriptor, to, size, offset);
  if (got > 0) counted.read += static_cast<uint64_t>(got);
  return got;
}

}  // extern "C"
