#pragma once

namespace Inspect {

extern const char* const REPORT_TEMPLATE;     ///< ReportPage.html, a mustache template
extern const char* const REPORT_STYLE;        ///< ReportPage.css
extern const char* const REPORT_SCRIPT;       ///< ReportPage.js
extern const char* const REPORT_SCRIPT_HASH;  ///< its SHA-256 in base64, by which the page's policy knows it

}  // namespace Inspect
