// How time and memory grow with what is read: lists of records, containers of many sections, folders of many files.
// Each runs in a process of its own, so that the most memory it had resident is its own.
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/common/ResultSummary.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libinspect/container/FileDiff.h>
#include <libinspect/job/JobFiles.h>
#include <libinspect/records/KnownPayload.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Veltra::ResultSummary;

constexpr std::size_t FILE_BYTES = 20 * 1024;

/// Ends the program: what follows would measure something else.
void need(bool isDone, const char* what) {
  if (isDone) return;
  std::fprintf(stderr, "growth: %s failed\n", what);
  std::_Exit(1);
}

struct Cost {
  double seconds = 0;  // processor time, all threads
  double bytes = 0;    // most memory resident, beyond that of a process that does nothing
};

Cost costOf(const std::function<void()>& work) {
  const auto childOf = [](const std::function<void()>& run, rusage& usage) {
    const pid_t child = fork();
    if (child == 0) {
      run();
      std::_Exit(0);
    }
    int status = 0;
    need(child > 0 && wait4(child, &status, 0, &usage) == child && status == 0, "a process");
  };
  rusage idle{}, busy{};
  childOf([] {}, idle);
  childOf(work, busy);
  const auto secondsOf = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return {secondsOf(busy.ru_utime) + secondsOf(busy.ru_stime),
          1024.0 * static_cast<double>(std::max(0L, busy.ru_maxrss - idle.ru_maxrss))};
}

/// @param times  the work is done, to measure what takes long enough
void row(const char* name, std::size_t items, std::size_t times, const std::function<void()>& work) {
  const Cost cost = costOf([&] {
    for (std::size_t i = 0; i < times; ++i) work();
  });
  std::printf("%-28s %8zu %10.1f ns %10.1f B\n", name, items, cost.seconds * 1e9 / static_cast<double>(items * times),
              cost.bytes / static_cast<double>(items));
  std::fflush(stdout);
}

ResultSummary summaryOf(std::size_t number) {
  ResultSummary summary;
  summary.resultName = "A-" + std::to_string(number);
  summary.resultType = Veltra::RESULT_TYPE_COPPER;
  summary.status = Veltra::STATUS_PASS;
  return summary;
}

void readLists() {
  for (const std::size_t count : {100, 1000, 10000, 65535}) {
    Veltra::ResultSummaryList list;
    for (std::size_t i = 0; i < count; ++i) list.add(std::make_unique<ResultSummary>(summaryOf(i)));
    Marshal::ByteStreamBuilder built;
    list.serialize(built);
    row("read a list of summaries", count, 1000000 / count, [&built] {
      Veltra::ResultSummaryList read;
      Marshal::ByteStreamReader in(built.data(), static_cast<unsigned>(built.size()));
      need(read.deserialize(in) == 0, "reading a list");
    });
  }
}

void writeContainer(const std::string& path, std::size_t sections, std::size_t payload, std::size_t number) {
  PFile::FileWriter file;
  need(file.open(path.c_str()) == 0, "making a file");
  ResultSummary summary = summaryOf(number);
  Veltra::MemFileWriter writer(&file);
  need(writer.writeSection(summary, Veltra::RESULT_SUMMARY_SECTION_VERSION, PFile::SECTION_RESULT_SUMMARY, 0, 0) == 0,
       "writing a summary");
  std::vector<unsigned char> bytes(payload, 7);
  PFile::Section section;
  need(section.set(300, 12, 0, bytes.data(), static_cast<unsigned>(bytes.size()), false, 0) == 0, "a section");
  for (std::size_t i = 0; i < sections; ++i) need(writer.write(section) == 0, "writing a section");
  need(file.close(false) == 0, "closing a file");
}

void readSections(const std::string& path) {
  PFile::FileReader reader;
  PFile::Section section;
  need(reader.open(path.c_str()) == 0, "opening a file");
  while (reader.read(section, true) == 0) {
  }
}

void examineFile(const std::string& path) {
  Inspect::ByteSource source;
  std::string error;
  need(source.open(path, error), "opening a file");
  need(judge(source, Inspect::Examination::ORDINARY).state == Inspect::FileState::INTACT, "examining a file");
}

void compareFile(const std::string& path) {
  Inspect::ByteSource a, b;
  std::string error;
  need(a.open(path, error) && b.open(path, error), "opening a file");
  differencesOf(a, b, Inspect::comparedFields, false, [](const Inspect::Difference&) {});
}

void readContainers(const fs::path& folder) {
  const std::string path = folder / "many.vres";
  for (const std::size_t count : {1000, 10000, 100000, 1000000}) {
    writeContainer(path, count, 64, 0);
    row("read sections", count, 1000000 / count, [&path] { readSections(path); });
    row("examine sections", count, 1000000 / count, [&path] { examineFile(path); });
    row("compare sections", count, 1000000 / count, [&path] { compareFile(path); });
  }
  fs::remove(path);
}

void readFolders(const fs::path& folder) {
  std::size_t there = 0;
  for (const std::size_t count : {100, 1000, 10000}) {
    std::vector<std::string> faults;
    for (; there < count; ++there) {
      writeContainer(folder / (std::to_string(there) + ".vres"), 1, FILE_BYTES, there);
    }
    const std::vector<std::string> named = {folder.string()};
    row("read a folder of results", count, 10000 / count, [&] {
      std::size_t passedOver = 0;
      const Inspect::FileRun run(Inspect::filesOf(named, true, faults, passedOver), named, 0, 0);
      const Inspect::JobFiles job =
          readJob(run, {}, [](const std::string&, const Inspect::ReadOutcome&, const Inspect::JudgedFile*) {});
      need(job.rows.size() == count, "reading a folder");
    });
  }
}

}  // namespace

int main() {
  std::string folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm/veltra_growth_XXXXXX" : "/tmp/veltra_growth_XXXXXX";
  need(mkdtemp(&folder[0]) != nullptr, "making a folder");
  std::printf("%-28s %8s %13s %12s\n", "", "items", "time an item", "memory");
  readLists();
  readContainers(folder);
  readFolders(folder);
  fs::remove_all(folder);
}
