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
