#include <libinspect/job/ManyFiles.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <thread>

#include <fmt/format.h>

namespace Inspect {
namespace {

namespace fs = std::filesystem;

void addFilesBelow(const std::string& directory, std::vector<std::string>& files, std::vector<std::string>& faults) {
  std::error_code error;
  std::vector<std::string> found;
  fs::recursive_directory_iterator entry(directory, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code unreadable;
    if (entry->is_regular_file(unreadable)) found.push_back(entry->path().string());
  }
  std::sort(found.begin(), found.end());
  files.insert(files.end(), found.begin(), found.end());
  if (error) faults.push_back(fmt::format("{}: {}", directory, error.message()));
}

unsigned threadsFor(const ReadingOptions& options, std::size_t files) {
  const unsigned threads = options.threads > 0 ? options.threads : std::max(1u, std::thread::hardware_concurrency());
  return static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(files, 1)));
}

ReadOutcome readOne(const std::string& file, ByteSource& source, const std::function<void()>& read) {
  ReadOutcome outcome;
  try {
    if (!source.open(file, outcome.error)) {
      outcome.state = source.isOverLimit() ? ReadOutcome::LEFT_OUT : ReadOutcome::COULD_NOT;
      return outcome;
    }
    read();
    if (source.hasFailed()) outcome.error = source.name() + ": read error";
  } catch (const std::exception& e) {  // out of memory: it must not end the other threads
    outcome.error = file + ": " + e.what();
  }
  if (!outcome.error.empty()) outcome.state = ReadOutcome::COULD_NOT;
  return outcome;
}

}  // namespace

std::vector<std::string> filesOf(const std::vector<std::string>& paths, bool recursive,
                                 std::vector<std::string>& faults) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code unreadable;
    if (!fs::is_directory(path, unreadable)) {
      files.push_back(path);
    } else if (recursive) {
      addFilesBelow(path, files, faults);
    } else {
      faults.push_back(path + ": is a directory; use -r to look into it");
    }
  }
  return files;
}

uint64_t bytesOf(const std::vector<std::string>& files) {
  uint64_t bytes = 0;
  std::error_code unknown;
  for (const std::string& file : files) {
    const std::uintmax_t size = fs::file_size(file, unknown);
    if (!unknown) bytes += size;
  }
  return bytes;
}

std::size_t batchSize(const ReadingOptions& options, std::size_t files) {
  constexpr std::size_t FILES_A_THREAD = 16;  // a hostile file may have a thousand findings
  return threadsFor(options, files) * FILES_A_THREAD;
}

std::vector<ReadOutcome> readBatch(const std::vector<std::string>& files, std::size_t begin, std::size_t end,
                                   const ReadingOptions& options,
                                   const std::function<void(std::size_t file, const ByteSource&)>& read) {
  std::vector<ReadOutcome> outcomes(end - begin);
  const unsigned threads = threadsFor(options, files.size());
  const auto work = [&](unsigned first) {  // each thread takes one file in `threads`
    ByteSource source;
    uint64_t done = 0;
    source.setLimit(options.maxSize);
    source.onRead([&](std::size_t bytes) {
      done += bytes;
      if (options.onRead) options.onRead(bytes);
    });
    for (std::size_t i = first; i < outcomes.size(); i += threads) {
      done = 0;
      outcomes[i] = readOne(files[begin + i], source, [&] { read(begin + i, source); });
      // Bytes that need not be read count as done.
      if (options.onRead && source.size() > done) options.onRead(source.size() - done);
    }
  };
  std::vector<std::thread> others;
  for (unsigned i = 1; i < threads; ++i) others.emplace_back(work, i);
  work(0);
  for (std::thread& thread : others) thread.join();
  return outcomes;
}

}  // namespace Inspect
