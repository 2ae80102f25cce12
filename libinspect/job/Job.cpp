#include <libinspect/job/Job.h>

#include <algorithm>
#include <filesystem>

#include <libinspect/container/ByteSource.h>

namespace Inspect {

namespace fs = std::filesystem;

std::vector<std::string> descriptionsIn(const std::vector<std::string>& paths) {
  std::vector<std::string> found;
  std::error_code unknown;
  for (const std::string& path : paths) {
    const std::string file = (fs::path(path) / JobDescription::FILE_NAME).string();
    if (!fs::is_directory(path, unknown) || fs::symlink_status(file, unknown).type() == fs::file_type::not_found)
      continue;
    const bool isKnown =
        std::any_of(found.begin(), found.end(), [&file](const std::string& other) { return isSameFile(other, file); });
    if (!isKnown) found.push_back(file);
  }
  return found;
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
