#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <libinspect/job/Job.h>
#include <libinspect/report/Picture.h>
#include <libinspect/report/TimeZone.h>

namespace Inspect {

/// Whom a page is for.
enum class Edition {
  CUSTOMER,    ///< the links; nothing of files but that one could not be read
  TECHNICIAN,  ///< all findings, too, and the commands that help
};

/// How a page is made.
struct ReportForm {
  std::string title;  ///< empty: that of the job, or "Cable test report"
  Edition edition = Edition::CUSTOMER;
  bool showsDetails = false;  ///< the blocks of the links are open, and are printed
  Picture logo;               ///< no uri: there is none
  std::vector<std::string> instruments;
};

/// A result that could be read, and could not any more when the page was written.
struct UnreadAgain {
  std::string file;
  std::string error;  ///< names it
};

/// Takes the next piece of a page. @return false if it cannot, after which no more is made
using WritePiece = std::function<bool(std::string_view piece)>;

/// Writes a job as one HTML page that needs no other file. The same files give the same bytes. Reads the sections of
/// each result when the page reaches its link; of the page no more than a link is held in memory.
/// @param job     settled
/// @param unread  receives the results that could not be read again; the page names them
/// @return false if a piece could not be written
[[nodiscard]] bool writeReport(const Job& job, const ReportForm& form, const TimeZone& zone, const WritePiece& write,
                               std::vector<UnreadAgain>& unread);

/// Leaves out of the files of a job the page it is about to replace, under any name, if that is a page of this or
/// another version.
void leaveOutPage(std::vector<std::string>& files, const std::string& page);

}  // namespace Inspect
