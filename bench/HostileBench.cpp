// How long 1 MiB of the most expensive bytes keeps a reader busy; tests/limits counts what is done meanwhile.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>

#include <libcrossplatform/common/Settings.h>
#include <libinspect/container/Recover.h>
#include <libinspect/records/FileJudge.h>

#include "../tests/limits/HostileFiles.h"

namespace {

using HostileFiles::Bytes;

constexpr std::size_t SIZE = std::size_t{1} << 20;

/// A file of these bytes, and its name.
struct File {
  explicit File(const Bytes& bytes) {
    std::FILE* const out = fdopen(mkstemp(&path[0]), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), out);
    std::fclose(out);
  }
  ~File() { unlink(path.c_str()); }
  std::string path = "/tmp/veltra_bench_XXXXXX";
};

void walk(const std::string& path) {
  PFile::FileReader reader;
  int code = reader.open(path.c_str());
  while (code == PFile::PFILE_OK) {
    PFile::Section section;
    code = reader.read(section, false);
  }
}

void doctor(const std::string& path) {
  std::string error;
  Inspect::ByteSource source;
  if (source.open(path, error)) judge(source, Inspect::Examination::DEEP);
}

void recover(const std::string& path) {
  std::string error;
  Inspect::ByteSource source;
  const std::string output = path + ".recovered";
  if (source.open(path, error) && writeRecovered(source, findSections(source), output, error)) doctor(output);
  unlink(output.c_str());
}

void measure(benchmark::State& state, void (*way)(const std::string&), const HostileFiles::Kind& kind) {
  const File file(kind.make(SIZE));
  for (auto _ : state) way(file.path);
}

/// 260,000 comments: placing them would take JsonCpp 44 s.
void readComments(benchmark::State& state) {
  std::string profile = "1 ";
  while (profile.size() < SIZE) profile += "/**/";
  Bytes bytes = HostileFiles::settingsRecord(profile);
  for (auto _ : state) {
    Marshal::StreamOpStatus status = 0;
    benchmark::DoNotOptimize(Veltra::Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status).get());
  }
}

}  // namespace

int main(int argc, char** argv) {
  struct Way {
    const char* name;
    void (*go)(const std::string& path);
  };
  for (const Way& way : {Way{"read", walk}, Way{"doctor --deep", doctor}, Way{"recover", recover}}) {
    for (const HostileFiles::Kind& kind : HostileFiles::KINDS) {
      const std::string name = std::string("hostile: ") + way.name + " of " + kind.name;
      benchmark::RegisterBenchmark(name.c_str(), measure, way.go, kind)->Unit(benchmark::kMillisecond);
    }
  }
  benchmark::RegisterBenchmark("hostile: settings with comments", readComments)->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
