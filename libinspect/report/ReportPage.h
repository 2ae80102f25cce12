#pragma once

#include <string>
#include <vector>

#include <libinspect/report/Report.h>

namespace Inspect {

/// A job as one self-contained HTML page: no script, no link, no font. The same files give the same
/// bytes. Memory use follows the size of the page.
/// @param title  the page's headline
std::string reportPage(const JobFiles& job, const std::string& title);

/// Leaves out of the files of a job the page it is about to replace, under any name, if that begins as every page does.
void leaveOutPage(std::vector<std::string>& files, const std::string& page);

}  // namespace Inspect
