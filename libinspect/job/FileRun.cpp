#include <libinspect/job/FileRun.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <libinspect/records/FileJudge.h>

namespace Inspect {
namespace {

namespace fs = std::filesystem;

std::string extensionOf(const std::string& file) {
  std::string extension = fs::path(file).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  return extension;
}

}  // namespace

FileRun::FileRun(std::vector<std::string> files, const std::vector<std::string>& named, uint64_t maxSize,
                 std::size_t passedOver)
    : _files(std::move(files)), _named(named.begin(), named.end()), _maxSize(maxSize), _passedOver(passedOver) {}

bool FileRun::sharesName(const std::string& file) const {
  const std::lock_guard<std::mutex> lock(_mutex);
  if (_names.empty()) {
    std::unordered_map<std::string, unsigned> names;  // all of them, or none where memory ends
    for (const std::string& each : _files) ++names[fs::path(each).filename().string()];
    _names = std::move(names);
  }
  const auto found = _names.find(fs::path(file).filename().string());
  return found != _names.end() && found->second > 1;
}

bool FileRun::isNamedAsResult(const std::string& file) const {
  const std::string extension = extensionOf(file);
  if (extension.empty()) return false;
  const std::lock_guard<std::mutex> lock(_mutex);
  const auto [found, isNew] = _extensions.emplace(extension, false);
  if (isNew && !_knowsExtensions) found->second = hasResultNamed(extension);
  return found->second;
}

std::vector<std::string> FileRun::resultExtensions() const {
  std::vector<std::string> extensions;
  for (const std::string& file : _files) isNamedAsResult(file);
  const std::lock_guard<std::mutex> lock(_mutex);
  for (const auto& [extension, isOfResults] : _extensions) {
    if (isOfResults) extensions.push_back(extension);
  }
  return extensions;
}

void FileRun::useResultExtensions(const std::vector<std::string>& extensions) {
  const std::lock_guard<std::mutex> lock(_mutex);
  _knowsExtensions = true;
  for (const std::string& extension : extensions) _extensions[extension] = true;
}

bool FileRun::hasResultNamed(const std::string& extension) const {
  ByteSource source;
  std::string error;
  std::error_code unreadable;
  source.setLimit(_maxSize);
  source.onRead([this](std::size_t) {
    if (_told) _told();
  });
  return std::any_of(_files.begin(), _files.end(), [&](const std::string& file) {
    // A pipe can be read only once.
    if (extensionOf(file) != extension || !fs::is_regular_file(file, unreadable) || !source.open(file, error)) {
      return false;
    }
    const JudgedFile judged = judge(source);
    return judged.hasSummary && judged.state == FileState::INTACT && !source.hasFailed();
  });
}

}  // namespace Inspect
