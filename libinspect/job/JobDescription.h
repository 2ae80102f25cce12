#pragma once

#include <string>
#include <vector>

#include <libinspect/job/ExpectedIds.h>

namespace Inspect {

/// What people know of a job and no result says: the content of job.json, docs/jobs.md.
struct JobDescription {
  static constexpr char FILE_NAME[] = "job.json";  ///< in the folder of the job

  std::string title, customer, site, operatorName, reference;  ///< UTF-8; empty where nothing is known
  std::string logo;                   ///< path of a picture; in readJobDescription() relative to the folder of the file
  std::vector<std::string> expected;  ///< each for ExpectedIds::add()
  bool isGuessed = false;             ///< the expected IDs were made from the results that were there
};

/// Reads a description from JSON text. A member that is missing is empty; a member of another name is refused, since it
/// is probably misspelt.
/// @param expected  receives the IDs of `description.expected`
/// @return false, with `error` naming the member, what was expected and what was found
[[nodiscard]] bool parseJobDescription(const std::string& text, JobDescription& description, ExpectedIds& expected,
                                       std::string& error);
/// The same from a file of at most MOST_TEXT bytes, whose name begins the error.
[[nodiscard]] bool readJobDescription(const std::string& path, JobDescription& description, ExpectedIds& expected,
                                      std::string& error);

/// The text that reads as this description, all members in it.
std::string textOf(const JobDescription& description);

}  // namespace Inspect
