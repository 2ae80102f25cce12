#pragma once

#include <string>
#include <vector>

#include <libinspect/job/JobDescription.h>
#include <libinspect/job/JobFiles.h>
#include <libinspect/job/JobLinks.h>

namespace Inspect {

/// A job: what people know of it, the files, and what they say of each link.
struct Job {
  Job() = default;
  Job(const Job&) = delete;  // links point to rows of the files
  Job& operator=(const Job&) = delete;

  JobDescription description;
  std::string descriptionFile;  ///< empty: there is none
  ExpectedIds expected;         ///< of the description, and what else is expected
  JobFiles files;
  std::vector<JobLink> links;

  /// Makes the links of the files. Call it when all else is there.
  void settle(CountPolicy policy) { links = linksOf(files, expected, policy); }
  /// Damaged and unreadable files of which nobody knows the link.
  std::vector<std::string> strays() const;
};

/// A description with the IDs that the results of a job seem to be of, marked as guessed; the names of damaged files
/// count where they fit into a range. Without IDs there is nothing to guess from.
/// @param unusual  receives the IDs that cannot be written as an expected ID
JobDescription guessedDescription(const Job& job, std::vector<std::string>& unusual);

/// The descriptions that folders have, by JobDescription::FILE_NAME, and those that are named themselves.
/// @param paths  of files and folders
std::vector<std::string> descriptionsIn(const std::vector<std::string>& paths);

/// The files of paths, as filesOf() has them, but for the descriptions that folders have.
/// @param faults  receives a line for each path that cannot be examined
/// @param others  receives how much else is there
std::vector<std::string> filesWithoutDescriptions(const std::vector<std::string>& paths, bool recursive,
                                                  std::vector<std::string>& faults, std::size_t& others);
/// The files that may be results of a job, each once, in folders and below.
std::vector<std::string> filesOf(const Job& job, const std::vector<std::string>& paths,
                                 std::vector<std::string>& faults, std::size_t& others);

/// Leaves each file in a list once, by whatever names it is there.
void leaveOutDoubles(std::vector<std::string>& files);

/// Takes the description of a job out of its files, by whatever name it is there.
void leaveOutDescription(std::vector<std::string>& files, const std::string& descriptionFile);

}  // namespace Inspect
