#pragma once

#include <string>

#include <libinspect/report/Report.h>

namespace Inspect {

/// A job as one HTML page that needs nothing but itself: no script, no address, no font. The same files give the same
/// bytes. Memory follows the page.
/// @param title  the page's headline
std::string reportPage(const JobFiles& job, const std::string& title);

}  // namespace Inspect
