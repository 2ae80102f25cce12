#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace Command {

/// Whether a workbook, a ZIP file of XML, was written to its end: each member inflates to its recorded CRC and size,
/// and its text ends with the element it begins with. For a writer that goes through temporary files and passes over
/// their errors.
/// @param rows  of each sheet, by its name in the file
[[nodiscard]] bool isWholeWorkbook(const std::string& path, const std::map<std::string, uint64_t>& rows);

}  // namespace Command
