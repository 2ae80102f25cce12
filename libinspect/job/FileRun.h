#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Inspect {

/// The files of one run of a command: what is said of a file because of the others.
class FileRun {
 public:
  /// @param files       all of them
  /// @param named       what was named: those files of which it is not enough to be found in a folder
  /// @param maxSize     larger files are not looked into; 0: no limit
  /// @param passedOver  how much else there is in the folders, which is no file
  FileRun(std::vector<std::string> files, const std::vector<std::string>& named, uint64_t maxSize,
          std::size_t passedOver);

  const std::vector<std::string>& files() const { return _files; }
  std::size_t passedOver() const { return _passedOver; }
  bool isNamed(const std::string& file) const { return _named.count(file) > 0; }
  /// Whether another file has the same name, in another folder. The first question looks at all names. From any thread.
  bool sharesName(const std::string& file) const;
  /// Whether an intact result has the extension of this file, in any case of letters. The first question for an
  /// extension reads files that have it until one is a result. From any thread.
  bool isNamedAsResult(const std::string& file) const;
  /// The extensions, in small letters, that intact results of the run have.
  std::vector<std::string> resultExtensions() const;
  /// Called after each read from the disk for these questions, from any thread. May throw, which ends what asks.
  void onRead(std::function<void()> told) { _told = std::move(told); }
  /// For a part of a larger run: those of all of it. No file is read for them then.
  void useResultExtensions(const std::vector<std::string>& extensions);

 private:
  bool hasResultNamed(const std::string& extension) const;

  std::vector<std::string> _files;
  std::unordered_set<std::string> _named;
  uint64_t _maxSize;
  std::size_t _passedOver;
  mutable std::mutex _mutex;                                 // guards what follows
  mutable std::unordered_map<std::string, unsigned> _names;  // empty until somebody asks
  mutable std::map<std::string, bool> _extensions;
  bool _knowsExtensions = false;
  std::function<void()> _told;
};

}  // namespace Inspect
