#include <libinspect/job/ManyFiles.h>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <json/value.h>

namespace Inspect {
namespace {

namespace fs = std::filesystem;

/// The regular files of a folder, also those that links lead to, and its folders.
/// @param others  counts what is neither: a FIFO, a socket, a device, a link that leads nowhere
/// @return 0, or the reason in the manner of errno
int listFolder(const std::string& folder, std::vector<std::string>& files, std::vector<std::string>& folders,
               std::size_t& others) {
  const std::unique_ptr<DIR, int (*)(DIR*)> opened(opendir(folder.c_str()), closedir);
  if (opened == nullptr) return errno;
  const std::string prefix = folder.back() == '/' ? folder : folder + "/";
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(opened.get());
    if (entry == nullptr) return errno;
    const std::string name = entry->d_name;
    struct stat status {};
    if (name == "." || name == "..") continue;
    if (lstat((prefix + name).c_str(), &status) != 0) {
      if (errno == ENOMEM) return errno;
      // Whoever tries to open it says why it cannot be looked at, unless it has gone meanwhile.
      if (errno != ENOENT) (entry->d_type == DT_DIR ? folders : files).push_back(prefix + name);
    } else if (S_ISDIR(status.st_mode)) {
      folders.push_back(prefix + name);
    } else if (S_ISREG(status.st_mode) || (stat((prefix + name).c_str(), &status) == 0 && S_ISREG(status.st_mode))) {
      files.push_back(prefix + name);
    } else if (!S_ISDIR(status.st_mode)) {
      ++others;
    }
  }
}

/// std::filesystem ends the program where it finds no memory for the name of an entry.
void addFilesBelow(const std::string& directory, std::vector<std::string>& files, std::vector<std::string>& faults,
                   std::size_t& others) {
  std::vector<std::string> found, folders = {directory};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    const int reason = listFolder(folder, found, folders, others);
    if (reason == ENOMEM) throw std::bad_alloc();
    if (reason != 0) faults.push_back(fmt::format("{}: {}", folder, std::strerror(reason)));
  }
  std::sort(found.begin(), found.end());
  files.insert(files.end(), found.begin(), found.end());
}

unsigned threadsFor(const ReadingOptions& options, std::size_t files) {
  const unsigned threads = options.threads > 0 ? options.threads : std::max(1u, std::thread::hardware_concurrency());
  return static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(files, 1)));
}

bool isOfMemory(const std::exception& exception) {
  return dynamic_cast<const std::bad_alloc*>(&exception) != nullptr ||
         dynamic_cast<const Json::RuntimeError*>(&exception) != nullptr;
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
  } catch (const std::exception& e) {  // it must not end the other threads
    outcome.error = file + ": " + causeOf(e);
    outcome.state = isOfMemory(e) ? ReadOutcome::OUT_OF_MEMORY : ReadOutcome::COULD_NOT;
    return outcome;
  }
  if (!outcome.error.empty()) outcome.state = ReadOutcome::COULD_NOT;
  return outcome;
}

}  // namespace

const char* causeOf(const std::exception& exception) {
  return isOfMemory(exception) ? "out of memory" : exception.what();
}

std::vector<std::string> filesOf(const std::vector<std::string>& paths, bool recursive,
                                 std::vector<std::string>& faults, std::size_t& others) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code unreadable;
    if (!fs::is_directory(path, unreadable)) {
      files.push_back(path);
    } else if (recursive) {
      addFilesBelow(path, files, faults, others);
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
  std::atomic<std::size_t> next{0};
  std::atomic<bool> isOutOfMemory{false};
  const auto work = [&] {
    try {
      ByteSource source;
      uint64_t done = 0;
      source.setLimit(options.maxSize);
      source.onRead([&](std::size_t bytes) {
        done += bytes;
        if (options.onRead) options.onRead(bytes);
      });
      for (std::size_t i = next++; i < outcomes.size(); i = next++) {
        done = 0;
        outcomes[i] = readOne(files[begin + i], source, [&] { read(begin + i, source); });
        // Bytes that need not be read count as done.
        if (options.onRead && source.size() > done) options.onRead(source.size() - done);
        if (options.onFile) options.onFile();
      }
    } catch (const std::exception&) {  // nothing may leave a thread
      isOutOfMemory = true;
    }
  };
  std::vector<std::thread> others;
  try {
    others.reserve(threads);
    while (others.size() + 1 < threads) others.emplace_back(work);
  } catch (const std::exception&) {  // no more threads, or no memory for them: those there are read all files
  }
  work();
  for (std::thread& thread : others) thread.join();
  if (isOutOfMemory) throw std::bad_alloc();
  return outcomes;
}

}  // namespace Inspect
