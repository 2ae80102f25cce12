#pragma once

#include <string>

#include <libinspect/report/Report.h>

namespace Inspect {

/// A job as one self-contained HTML page: no script, no link, no font. The same files give the same
/// bytes. Memory use follows the size of the page.
/// @param title  the page's headline
std::string reportPage(const JobFiles& job, const std::string& title);

/// Whether a file begins as every page does. False if it cannot be read.
bool isReportPage(const std::string& path);

}  // namespace Inspect
