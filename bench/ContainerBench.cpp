// Writing and reading of containers, each beside its limit: the same bytes through memcpy or stdio, their CRC-32 and,
// for compressed sections, their zlib streams, without a library around them. A file holds 4 MiB of payload.

#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultFile.h>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>
#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "AllocationCounter.h"

using namespace Bench;
using PFile::Header;

namespace {

constexpr uint32_t TOTAL_BYTES = 4 * 1024 * 1024;
constexpr std::size_t STDIO_BYTES = 64 * 1024;  // as the library's readers and writers have
constexpr int LEVEL = 6;
constexpr uint16_t TYPE = 301;
constexpr uint16_t VERSION = 3;

using Bytes = std::vector<unsigned char>;

/// What sections mostly hold: 16-bit samples of a level that falls with the distance, with steps and a little noise.
Bytes samples() {
  Bytes bytes(TOTAL_BYTES);
  uint32_t noise = 1;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    noise = noise * 1664525u + 1013904223u;
    const double distance = static_cast<double>(i % 65536) / 65536.0;
    const double level = 30000.0 - 20000.0 * distance - 1500.0 * std::floor(distance * 8.0);
    const int sample = static_cast<int>(level) + static_cast<int>(noise >> 28);
    bytes[i] = static_cast<unsigned char>(sample >> 8);
    bytes[i + 1] = static_cast<unsigned char>(sample);
  }
  return bytes;
}

/// A file in memory where the machine has such a directory, so that no disk is measured.
class ScratchFile {
 public:
  ScratchFile() : _path(access("/dev/shm", W_OK) == 0 ? "/dev/shm/veltra_bench_XXXXXX" : "/tmp/veltra_bench_XXXXXX") {
    const int descriptor = mkstemp(&_path[0]);
    if (descriptor >= 0) ::close(descriptor);
  }
  ~ScratchFile() { unlink(_path.c_str()); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  const char* path() const { return _path.c_str(); }

 private:
  std::string _path;
};

/// What one benchmark writes: TOTAL_BYTES in sections of the size asked for.
struct Job {
  Job(benchmark::State& s, bool compress)
      : state(s),
        sectionBytes(static_cast<uint32_t>(s.range(0))),
        sections(TOTAL_BYTES / sectionBytes),
        compressed(compress),
        payload(samples()),
        image(compress ? TOTAL_BYTES + 64 * sections : TOTAL_BYTES + Header::BYTES * (sections + 1) + 4) {}

  unsigned char* section(uint32_t i) { return payload.data() + static_cast<std::size_t>(i) * sectionBytes; }
  PFile::SECTION_FLAGS flags() const { return compressed ? PFile::SECTION_FLAG_COMPRESS : 0; }
  void done() { state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * TOTAL_BYTES); }

  benchmark::State& state;
  uint32_t sectionBytes;
  uint32_t sections;
  bool compressed;
  Bytes payload;
  Bytes image;  ///< for a container in memory
  ScratchFile file;
};

// The library's side. Writer and reader of a file and of memory differ in what they are opened with and closed by.

template <class Writer>
void writeSections(Job& job, Writer& writer) {
  for (uint32_t i = 0; i < job.sections; ++i) {
    PFile::Section section;
    if (section.set(TYPE, VERSION, job.flags(), job.section(i), job.sectionBytes, false, LEVEL) != 0 ||
        writer.write(section) != 0) {
      return job.state.SkipWithError("not written");
    }
  }
}

template <class Reader>
void readSections(Job& job, Reader& reader) {
  PFile::Section section;
  uint32_t read = 0;
  while (reader.read(section, true) == 0) ++read;
  if (read != job.sections) job.state.SkipWithError("not read");
}

void writeFile(Job& job) {
  PFile::FileWriter writer;
  if (writer.open(job.file.path()) != 0) job.state.SkipWithError("not opened");
  writeSections(job, writer);
  if (writer.close(false) != 0) job.state.SkipWithError("not closed");
}

void writeMemory(Job& job) {
  PFile::MemWriter writer;
  if (writer.open(job.image.data(), static_cast<uint32_t>(job.image.size())) != 0) {
    job.state.SkipWithError("not opened");
  }
  writeSections(job, writer);
  if (writer.close() != 0) job.state.SkipWithError("not closed");
}

void readFile(Job& job) {
  PFile::FileReader reader;
  if (reader.open(job.file.path()) != 0) job.state.SkipWithError("not opened");
  readSections(job, reader);
}

void readMemory(Job& job) {
  PFile::MemReader reader;
  if (reader.open(job.image.data(), static_cast<uint32_t>(job.image.size())) != 0) {
    job.state.SkipWithError("not opened");
  }
  readSections(job, reader);
}

// The limits: buffers that stay, every byte moved once and summed once.

void store16(unsigned char* to, uint32_t value) {
  to[0] = static_cast<unsigned char>(value >> 8);
  to[1] = static_cast<unsigned char>(value);
}

void store32(unsigned char* to, uint32_t value) {
  store16(to, value >> 16);
  store16(to + 2, value);
}

uint32_t load32(const unsigned char* from) {
  return static_cast<uint32_t>(from[0]) << 24 | static_cast<uint32_t>(from[1]) << 16 |
         static_cast<uint32_t>(from[2]) << 8 | from[3];
}

uint32_t crcOf(const unsigned char* data, uint32_t size) {
  return static_cast<uint32_t>(crc32(0, data, size));
}

void bareHeader(unsigned char (&header)[Header::BYTES], uint32_t type, uint32_t flags, const unsigned char* data,
                uint32_t size) {
  store16(header, Header::MAGIC);
  store16(header + 2, type);
  store16(header + 4, VERSION);
  store16(header + 6, flags);
  store32(header + 8, size);
  store32(header + 12, crcOf(data, size));
  store32(header + 16, crcOf(header, Header::HDR_CRC_BYTES));
}

/// @param put  takes bytes and their number
template <class Put>
void bareWrite(Job& job, Bytes& zlibBytes, Put put) {
  unsigned char header[Header::BYTES];
  for (uint32_t i = 0; i < job.sections; ++i) {
    const unsigned char* data = job.section(i);
    uint32_t size = job.sectionBytes;
    if (job.compressed) {
      uLongf room = static_cast<uLongf>(zlibBytes.size() - 4);
      if (compress2(zlibBytes.data() + 4, &room, data, size, LEVEL) != Z_OK) job.state.SkipWithError("not compressed");
      std::memcpy(zlibBytes.data(), &size, sizeof size);
      data = zlibBytes.data();
      size = static_cast<uint32_t>(room) + 4;
    }
    bareHeader(header, TYPE, job.compressed ? LEVEL << 12 | 1 : 0, data, size);
    put(header, sizeof header);
    put(data, size);
  }
}

void bareWriteFile(Job& job, Bytes& zlibBytes, char* stdioBuffer) {
  std::FILE* const stream = std::fopen(job.file.path(), "wb");
  std::setvbuf(stream, stdioBuffer, _IOFBF, STDIO_BYTES);
  uint32_t total = Header::BYTES + sizeof total;
  const auto put = [&](const unsigned char* data, std::size_t size) {
    if (std::fwrite(data, 1, size, stream) != size) job.state.SkipWithError("not written");
    total += static_cast<uint32_t>(size);
  };
  const auto putFileHeader = [&] {
    unsigned char header[Header::BYTES];
    unsigned char totalBytes[sizeof total];
    std::memcpy(totalBytes, &total, sizeof total);
    bareHeader(header, PFile::FILE_HEADER_TYPE, 0, totalBytes, sizeof totalBytes);
    std::fwrite(header, 1, sizeof header, stream);
    std::fwrite(totalBytes, 1, sizeof totalBytes, stream);
  };
  putFileHeader();
  bareWrite(job, zlibBytes, put);
  std::rewind(stream);
  putFileHeader();
  std::fclose(stream);
}

void bareWriteMemory(Job& job, Bytes& zlibBytes, char*) {
  unsigned char* to = job.image.data() + Header::BYTES + 4;
  bareWrite(job, zlibBytes, [&to](const unsigned char* data, std::size_t size) {
    std::memcpy(to, data, size);
    to += size;
  });
}

/// One section's check, and its original bytes into a buffer that stays.
void bareCheck(Job& job, const unsigned char* header, const unsigned char* data, uint32_t size, Bytes& original) {
  if (crcOf(header, Header::HDR_CRC_BYTES) != load32(header + 16) || crcOf(data, size) != load32(header + 12)) {
    return job.state.SkipWithError("damaged");
  }
  if (!job.compressed) return;
  uLongf room = original.size();
  if (uncompress(original.data(), &room, data + 4, size - 4) != Z_OK) job.state.SkipWithError("not uncompressed");
}

void bareReadFile(Job& job, Bytes& original, char* stdioBuffer) {
  std::FILE* const stream = std::fopen(job.file.path(), "rb");
  std::setvbuf(stream, stdioBuffer, _IOFBF, STDIO_BYTES);
  unsigned char header[Header::BYTES];
  std::fseek(stream, Header::BYTES + 4, SEEK_SET);
  while (std::fread(header, 1, sizeof header, stream) == sizeof header) {
    const uint32_t size = load32(header + 8);
    if (std::fread(job.image.data(), 1, size, stream) != size) job.state.SkipWithError("not read");
    bareCheck(job, header, job.image.data(), size, original);
  }
  std::fclose(stream);
}

void bareReadMemory(Job& job, Bytes& original, char*) {
  const unsigned char* from = job.image.data() + Header::BYTES + 4;
  for (uint32_t i = 0; i < job.sections; ++i) {
    const uint32_t size = load32(from + 8);
    bareCheck(job, from, from + Header::BYTES, size, original);
    from += Header::BYTES + size;
  }
}

template <void (*WRITE)(Job&), void (*RUN)(Job&), bool COMPRESSED>
void veltra(benchmark::State& state) {
  Job job(state, COMPRESSED);
  WRITE(job);
  const AllocationCounter allocs(state, job.sections);
  for (auto _ : state) {
    RUN(job);
    benchmark::ClobberMemory();
  }
  job.done();
}

template <void (*WRITE)(Job&), void (*RUN)(Job&, Bytes&, char*), bool COMPRESSED>
void limit(benchmark::State& state) {
  Job job(state, COMPRESSED);
  WRITE(job);
  Bytes zlibBytes(compressBound(job.sectionBytes) + 4);
  std::vector<char> stdioBuffer(STDIO_BYTES);
  const AllocationCounter allocs(state, job.sections);
  for (auto _ : state) {
    RUN(job, zlibBytes, stdioBuffer.data());
    benchmark::ClobberMemory();
  }
  job.done();
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(256)->Arg(4096)->Arg(65536)->Arg(1048576)->Unit(benchmark::kMicrosecond);
}

// Each written once by the library first, so that what the limits read is what the library writes.
BENCHMARK(limit<writeFile, bareWriteFile, false>)->Apply(sizes)->Name("write file/limit");
BENCHMARK(veltra<writeFile, writeFile, false>)->Apply(sizes)->Name("write file/veltra");
BENCHMARK(limit<writeFile, bareReadFile, false>)->Apply(sizes)->Name("read file/limit");
BENCHMARK(veltra<writeFile, readFile, false>)->Apply(sizes)->Name("read file/veltra");
BENCHMARK(limit<writeMemory, bareWriteMemory, false>)->Apply(sizes)->Name("write memory/limit");
BENCHMARK(veltra<writeMemory, writeMemory, false>)->Apply(sizes)->Name("write memory/veltra");
BENCHMARK(limit<writeMemory, bareReadMemory, false>)->Apply(sizes)->Name("read memory/limit");
BENCHMARK(veltra<writeMemory, readMemory, false>)->Apply(sizes)->Name("read memory/veltra");
BENCHMARK(limit<writeFile, bareWriteFile, true>)->Apply(sizes)->Name("write file compressed/limit");
BENCHMARK(veltra<writeFile, writeFile, true>)->Apply(sizes)->Name("write file compressed/veltra");
BENCHMARK(limit<writeFile, bareReadFile, true>)->Apply(sizes)->Name("read file compressed/limit");
BENCHMARK(veltra<writeFile, readFile, true>)->Apply(sizes)->Name("read file compressed/veltra");
BENCHMARK(limit<writeMemory, bareWriteMemory, true>)->Apply(sizes)->Name("write memory compressed/limit");
BENCHMARK(veltra<writeMemory, writeMemory, true>)->Apply(sizes)->Name("write memory compressed/veltra");
BENCHMARK(limit<writeMemory, bareReadMemory, true>)->Apply(sizes)->Name("read memory compressed/limit");
BENCHMARK(veltra<writeMemory, readMemory, true>)->Apply(sizes)->Name("read memory compressed/veltra");

// Small sections that are passed over. The time is that of one section.

int skipOne(PFile::FileReader& reader, PFile::Section&) {
  return reader.skipNextSection();
}

int peekAndSkipOne(PFile::FileReader& reader, PFile::Section& section) {
  const int code = reader.peek(section.header);
  return code != 0 ? code : reader.skipNextSection();
}

int readOne(PFile::FileReader& reader, PFile::Section& section) {
  return reader.read(section, true);
}

template <int (*PASS)(PFile::FileReader&, PFile::Section&)>
void passVeltra(benchmark::State& state) {
  Job job(state, false);
  writeFile(job);
  while (state.KeepRunningBatch(job.sections)) {
    PFile::FileReader reader;
    PFile::Section section;
    if (reader.open(job.file.path()) != 0) state.SkipWithError("not opened");
    for (uint32_t i = 0; i < job.sections; ++i) {
      if (PASS(reader, section) != 0) state.SkipWithError("not passed");
    }
  }
}

/// Headers checked, payloads read and not looked at.
void passLimit(benchmark::State& state) {
  Job job(state, false);
  writeFile(job);
  std::vector<char> stdioBuffer(STDIO_BYTES);
  unsigned char header[Header::BYTES];
  while (state.KeepRunningBatch(job.sections)) {
    std::FILE* const stream = std::fopen(job.file.path(), "rb");
    std::setvbuf(stream, stdioBuffer.data(), _IOFBF, STDIO_BYTES);
    std::fseek(stream, Header::BYTES + 4, SEEK_SET);
    for (uint32_t i = 0; i < job.sections; ++i) {
      const bool done = std::fread(header, 1, sizeof header, stream) == sizeof header &&
                        crcOf(header, Header::HDR_CRC_BYTES) == load32(header + 16) &&
                        std::fread(job.image.data(), 1, load32(header + 8), stream) == job.sectionBytes;
      if (!done) state.SkipWithError("not passed");
    }
    std::fclose(stream);
  }
}
BENCHMARK(passLimit)->Arg(64)->Name("skip/limit");
BENCHMARK(passVeltra<skipOne>)->Arg(64)->Name("skip/veltra");
BENCHMARK(passVeltra<readOne>)->Arg(64)->Name("skip/reading it");
BENCHMARK(passLimit)->Arg(64)->Name("peek and skip/limit");
BENCHMARK(passVeltra<peekAndSkipOne>)->Arg(64)->Name("peek and skip/veltra");

/// A number of KiB from this process's own description; 0 when there is none.
double ownKiB(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string word;
  double kib = 0;
  while (status >> word) {
    if (word == name + ":" && status >> kib) return kib;
  }
  return 0;
}

/// How much more memory is in use while a file is read than before.
template <class Run>
void peakOf(benchmark::State& state, Run run) {
  Job job(state, false);
  writeFile(job);
  job.image = Bytes();
  double peak = 0;
  for (auto _ : state) {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;  // the peak begins anew
    const double before = ownKiB("VmRSS");
    run(job);
    peak = ownKiB("VmHWM") - before;
  }
  state.counters["peak_kib"] = peak;
}

void peakLimit(benchmark::State& state) {
  peakOf(state, [](Job& job) {
    Bytes none;
    std::vector<char> stdioBuffer(STDIO_BYTES);
    job.image.resize(job.sectionBytes);
    bareReadFile(job, none, stdioBuffer.data());
  });
}

void peakVeltra(benchmark::State& state) {
  peakOf(state, readFile);
}
BENCHMARK(peakLimit)->Arg(1048576)->Iterations(1)->Name("peak memory of reading/limit");
BENCHMARK(peakVeltra)->Arg(1048576)->Iterations(1)->Name("peak memory of reading/veltra");

/// A result file of 4 MiB: the summary and sections of 64 KiB.
class ResultFile {
 public:
  ResultFile() {
    Bytes payload = samples();
    Veltra::ResultSummary summary;
    summary.setResultName("Floor 2 / Panel A-17");
    PFile::FileWriter writer;
    (void)writer.open(_file.path());  // what is not written, the measurements cannot read
    (void)Veltra::MemFileWriter(&writer).writeSection(summary, 1, PFile::SECTION_RESULT_SUMMARY, 0, 0);
    for (std::size_t at = 0; at < payload.size(); at += 65536) {
      PFile::Section section;
      (void)section.set(TYPE, VERSION, 0, payload.data() + at, 65536, false, 0);
      (void)writer.write(section);
    }
    (void)writer.close(false);
  }
  const char* path() const { return _file.path(); }

 private:
  ScratchFile _file;
};

constexpr uint32_t SUMMARY_AT = Header::BYTES + 4;
constexpr uint32_t SUMMARY_BYTES = 69;
constexpr uint32_t SUMMARY_FILE_BYTES = SUMMARY_AT + Header::BYTES + SUMMARY_BYTES;  // up to its end

bool isIntact(const unsigned char* bytes) {
  const auto sectionIsIntact = [](const unsigned char* header, uint32_t size) {
    return crcOf(header, Header::HDR_CRC_BYTES) == load32(header + 16) && load32(header + 8) == size &&
           crcOf(header + Header::BYTES, size) == load32(header + 12);
  };
  return sectionIsIntact(bytes, 4) && sectionIsIntact(bytes + SUMMARY_AT, SUMMARY_BYTES);
}

/// Three system calls and three checks: the summary's bytes, not yet its fields.
void summaryLimit(benchmark::State& state) {
  const ResultFile file;
  unsigned char bytes[SUMMARY_FILE_BYTES];
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    const int descriptor = ::open(file.path(), O_RDONLY);
    const bool done = ::read(descriptor, bytes, sizeof bytes) == static_cast<ssize_t>(sizeof bytes);
    ::close(descriptor);
    if (!done || !isIntact(bytes)) state.SkipWithError("not read");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(summaryLimit)->Name("open and read summary/limit")->Unit(benchmark::kMicrosecond);

/// The same through stdio.
void summaryStdio(benchmark::State& state) {
  const ResultFile file;
  unsigned char bytes[SUMMARY_FILE_BYTES];
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    std::FILE* const stream = std::fopen(file.path(), "rb");
    const bool done = std::fread(bytes, 1, sizeof bytes, stream) == sizeof bytes;
    std::fclose(stream);
    if (!done || !isIntact(bytes)) state.SkipWithError("not read");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(summaryStdio)->Name("open and read summary/stdio")->Unit(benchmark::kMicrosecond);

void summaryVeltra(benchmark::State& state) {
  const ResultFile file;
  Veltra::ResultSummary summary;
  summary.setResultName("Floor 2 / Panel A-17");
  const AllocationCounter allocs(state);
  for (auto _ : state) {
    if (Veltra::readResultSummary(summary, file.path(), false) != 0) state.SkipWithError("not read");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(summaryVeltra)->Name("open and read summary/veltra")->Unit(benchmark::kMicrosecond);

}  // namespace
