#pragma once

#include <libinspect/report/PageData.h>
#include <libinspect/report/Report.h>
#include <libinspect/report/ReportPage.h>

namespace Inspect {

/// What the page says of one link, with all its results and what the sections of those that count hold, which are read
/// here.
/// @param unread  receives the files that could not be read again
PageData linkBlock(const JobLink& link, const ReportForm& form, const TimeZone& zone, std::vector<UnreadAgain>& unread);

/// A file as a page names it: a customer has no use for folders.
std::string shownFile(const std::string& path, Edition edition);

/// "24.15 m, headroom > 6.12 dB", as far as there are numbers.
std::string measuredWords(const ResultRow& row);

}  // namespace Inspect
