#include <libinspect/job/Job.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <unordered_set>
#include <utility>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/container/ByteSource.h>

namespace Inspect {

namespace fs = std::filesystem;

namespace {

/// Whether a file begins as containers do, whatever its name.
bool looksLikeContainer(const std::string& file) {
  ByteSource source;
  std::string error;
  char begin[2] = {};
  return source.openFile(file, error) && source.readAt(0, begin, sizeof begin) == sizeof begin && begin[0] == 'P' &&
         begin[1] == 'F';
}

}  // namespace

std::vector<std::string> Job::strays() const {
  std::unordered_set<std::string> known;
  for (const JobLink& link : links) known.insert(link.lostFiles.begin(), link.lostFiles.end());
  std::vector<std::string> strays;
  for (const std::string& file : files.lost) {
    if (known.insert(file).second) strays.push_back(file);
  }
  return strays;
}

JobDescription guessedDescription(const Job& job, std::vector<std::string>& unusual) {
  std::vector<std::string> ids, likely;
  for (const JobLink& link : job.links) ids.push_back(link.id);
  for (const std::string& file : job.files.lost) likely.push_back(fs::path(file).stem().string());
  JobDescription description;
  description.isGuessed = true;
  description.expected = guessedRanges(ids, likely, unusual);
  ExpectedIds expected;
  std::string refusal;
  const auto fits = [&](const std::string& range) { return expected.add(range, refusal); };
  if (!std::all_of(description.expected.begin(), description.expected.end(), fits)) {  // too many with the gaps
    description.expected.clear();
    for (const std::string& id : ids) {
      if (std::find(unusual.begin(), unusual.end(), id) == unusual.end()) description.expected.push_back(id);
    }
  }
  return description;
}

std::vector<std::string> descriptionsIn(const std::vector<std::string>& paths) {
  std::vector<std::string> found;
  std::error_code unknown;
  for (const std::string& path : paths) {
    const bool isNamed = fs::path(path).filename() == JobDescription::FILE_NAME;
    const std::string file = isNamed ? path : (fs::path(path) / JobDescription::FILE_NAME).string();
    if (!isNamed && !fs::is_directory(path, unknown)) continue;
    if (fs::symlink_status(file, unknown).type() == fs::file_type::not_found) continue;
    const bool isKnown =
        std::any_of(found.begin(), found.end(), [&file](const std::string& other) { return isSameFile(other, file); });
    if (!isKnown) found.push_back(file);
  }
  return found;
}

std::vector<std::string> filesWithoutDescriptions(const std::vector<std::string>& paths, bool recursive,
                                                  std::vector<std::string>& faults, std::size_t& others) {
  std::vector<std::string> files = filesOf(paths, recursive, faults, others);
  for (const std::string& description : descriptionsIn(paths)) {
    const bool isNamed = std::find(paths.begin(), paths.end(), description) != paths.end();
    if (!isNamed && !looksLikeContainer(description)) leaveOutDescription(files, description);
  }
  return files;
}

std::vector<std::string> filesOf(const Job& job, const std::vector<std::string>& paths,
                                 std::vector<std::string>& faults, std::size_t& others) {
  std::vector<std::string> files = filesWithoutDescriptions(paths, true, faults, others);
  if (paths.size() > 1) leaveOutDoubles(files);
  if (!job.descriptionFile.empty()) leaveOutDescription(files, job.descriptionFile);
  return files;
}

void leaveOutDoubles(std::vector<std::string>& files) {
  std::set<std::pair<uint64_t, uint64_t>> known;
  const auto isDouble = [&known](const std::string& file) {
    const Veltra::FileStamp stamp = Veltra::FileStamp::of(file);
    return stamp.exists && !known.emplace(stamp.device, stamp.inode).second;
  };
  files.erase(std::remove_if(files.begin(), files.end(), isDouble), files.end());
}

void leaveOutDescription(std::vector<std::string>& files, const std::string& descriptionFile) {
  const fs::path name = fs::path(descriptionFile).filename();
  files.erase(std::remove_if(files.begin(), files.end(),
                             [&](const std::string& file) {
                               return fs::path(file).filename() == name && isSameFile(file, descriptionFile);
                             }),
              files.end());
}

}  // namespace Inspect
