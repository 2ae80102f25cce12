#include <libinspect/job/ManyFiles.h>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <json/value.h>

namespace Inspect {
namespace {

namespace fs = std::filesystem;

/// The regular files of a folder, also those that links lead to, and its folders.
/// @param passedOver  receives what is neither
/// @return 0, or the reason in the manner of errno
int listFolder(const std::string& folder, std::vector<std::string>& files, std::vector<std::string>& folders,
               PassedOver& passedOver) {
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
    if (entry->d_type == DT_REG || entry->d_type == DT_DIR) {  // most file systems say so, and thousands need no look
      (entry->d_type == DT_DIR ? folders : files).push_back(prefix + name);
    } else if (lstat((prefix + name).c_str(), &status) != 0) {
      if (errno == ENOMEM) return errno;
      // Whoever tries to open it says why it cannot be looked at, unless it has gone meanwhile.
      if (errno != ENOENT) files.push_back(prefix + name);
    } else if (S_ISDIR(status.st_mode)) {
      folders.push_back(prefix + name);
    } else if (S_ISREG(status.st_mode) || (stat((prefix + name).c_str(), &status) == 0 && S_ISREG(status.st_mode))) {
      files.push_back(prefix + name);
    } else {
      (S_ISDIR(status.st_mode) ? passedOver.linkedFolders : passedOver.others).push_back(prefix + name);
    }
  }
}

/// std::filesystem ends the program where it finds no memory for the name of an entry.
void addFilesBelow(const std::string& directory, std::vector<std::string>& files, std::vector<std::string>& faults,
                   PassedOver& passedOver) {
  std::vector<std::string> found, folders = {directory};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    const int reason = listFolder(folder, found, folders, passedOver);
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

/// One thread for each place it is worth having one, which stay for all files. The calling thread takes the outcomes in
/// order, and reads as the others do while the next one is not there yet.
class OrderedReading {
 public:
  OrderedReading(const std::vector<std::string>& files, const ReadingOptions& options, std::size_t places,
                 const OnOpened& onOpened)
      : _files(files), _options(options), _onOpened(onOpened), _places(places) {}
  OrderedReading(const OrderedReading&) = delete;
  OrderedReading& operator=(const OrderedReading&) = delete;
  ~OrderedReading() {
    {
      const std::lock_guard<std::mutex> lock(_mutex);
      _isOver = true;
    }
    _changed.notify_all();
    for (std::thread& thread : _threads) thread.join();
  }

  void run(const OnOutcome& onOutcome) {
    startThreads();
    Reader reader(*this);
    for (std::size_t file = 0; file < _files.size(); ++file) {
      Place& place = _places[file % _places.size()];
      {
        std::unique_lock<std::mutex> lock(_mutex);
        while (!place.isRead && !_isOutOfMemory) {
          if (mayRead()) {
            readNext(reader, lock);
          } else {
            _changed.wait(lock);
          }
        }
        if (_isOutOfMemory) throw std::bad_alloc();
        place.isRead = false;
      }
      onOutcome(file, file % _places.size(), place.outcome);
      const std::lock_guard<std::mutex> lock(_mutex);
      ++_told;
      _changed.notify_all();
    }
  }

 private:
  struct Place {
    ReadOutcome outcome;
    bool isRead = false;
  };

  /// What one thread reads with.
  struct Reader {
    explicit Reader(const OrderedReading& reading) {
      source.setLimit(reading._options.maxSize);
      source.onRead([this, &reading](std::size_t bytes) {
        done += bytes;
        if (reading._options.onRead) reading._options.onRead(bytes);
      });
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    ByteSource source;
    uint64_t done = 0;
  };

  void startThreads() {
    const unsigned threads = threadsFor(_options, _files.size());
    try {
      _threads.reserve(threads);
      while (_threads.size() + 1 < threads) _threads.emplace_back([this] { work(); });
    } catch (const std::exception&) {  // no more threads, or no memory for them: those there are read all files
    }
  }

  void work() {
    try {
      Reader reader(*this);
      std::unique_lock<std::mutex> lock(_mutex);
      while (!_isOver && _next < _files.size()) {
        if (mayRead()) {
          readNext(reader, lock);
          _changed.notify_all();
        } else {
          _changed.wait(lock);
        }
      }
    } catch (const std::exception&) {  // nothing may leave a thread
      const std::lock_guard<std::mutex> lock(_mutex);
      _isOutOfMemory = true;
      _changed.notify_all();
    }
  }

  bool mayRead() const { return _next < _files.size() && _next < _told + _places.size(); }

  void readNext(Reader& reader, std::unique_lock<std::mutex>& lock) {
    const std::size_t file = _next++, at = file % _places.size();
    lock.unlock();
    reader.done = 0;
    ReadOutcome outcome = readOne(_files[file], reader.source, [&] { _onOpened(at, reader.source); });
    // Bytes that need not be read count as done.
    if (_options.onRead && reader.source.size() > reader.done) _options.onRead(reader.source.size() - reader.done);
    if (_options.onFile) _options.onFile();
    lock.lock();
    _places[at].outcome = std::move(outcome);
    _places[at].isRead = true;
  }

  const std::vector<std::string>& _files;
  const ReadingOptions& _options;
  const OnOpened& _onOpened;
  std::vector<std::thread> _threads;
  std::mutex _mutex;  // guards what follows, but for the outcome of a place that is being told
  std::condition_variable _changed;
  std::vector<Place> _places;  // file i has place i modulo their number
  std::size_t _next = 0;       // file to be read next
  std::size_t _told = 0;       // files whose outcomes were taken
  bool _isOver = false;
  bool _isOutOfMemory = false;
};

}  // namespace

const char* causeOf(const std::exception& exception) {
  return isOfMemory(exception) ? "out of memory" : exception.what();
}

std::vector<std::string> filesOf(const std::vector<std::string>& paths, bool recursive,
                                 std::vector<std::string>& faults, PassedOver& passedOver) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code unreadable;
    if (!fs::is_directory(path, unreadable)) {
      files.push_back(path);
    } else if (recursive) {
      addFilesBelow(path, files, faults, passedOver);
    } else {
      faults.push_back(path + ": is a directory; use -r to look into it");
    }
  }
  std::sort(passedOver.linkedFolders.begin(), passedOver.linkedFolders.end());
  std::sort(passedOver.others.begin(), passedOver.others.end());
  return files;
}

std::vector<std::string> filesOf(const std::vector<std::string>& paths, bool recursive,
                                 std::vector<std::string>& faults, std::size_t& others) {
  PassedOver passedOver;
  std::vector<std::string> files = filesOf(paths, recursive, faults, passedOver);
  others += passedOver.others.size();
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

std::size_t readAhead(const ReadingOptions& options, std::size_t files) {
  constexpr std::size_t FILES_A_THREAD = 16;  // a hostile file may have a thousand findings
  return std::min(threadsFor(options, files) * FILES_A_THREAD, std::max<std::size_t>(files, 1));
}

void readInOrder(const std::vector<std::string>& files, const ReadingOptions& options, std::size_t places,
                 const OnOpened& onOpened, const OnOutcome& onOutcome) {
  OrderedReading(files, options, places, onOpened).run(onOutcome);
}

}  // namespace Inspect
