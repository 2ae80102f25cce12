#pragma once

namespace Inspect {

/// ReportPage.html, a mustache template.
extern const char* const REPORT_TEMPLATE;

}  // namespace Inspect
