#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/common/EquipmentInformation.h>
#include <libinspect/job/ManyFiles.h>
#include <libinspect/report/Picture.h>
#include <libinspect/report/TimeZone.h>

namespace Inspect {

/// A named text of a table.
struct HeldValue {
  std::string name;
  std::string text;
};

/// What a section of a result holds, for people.
struct HeldSection {
  std::string name;               ///< of its type
  std::string words;              ///< what there is to say of it besides the table or picture
  std::vector<HeldValue> values;  ///< of a known record or of JSON, secrets masked
  Picture picture;                ///< no uri: there is none
};

/// What there is to show of a result beyond its summary.
struct HeldSections {
  static constexpr std::size_t MOST_SECTIONS = 100;                        ///< of one file
  static constexpr std::size_t MOST_VALUES = 2000;                         ///< of all its tables
  static constexpr std::size_t MOST_PICTURES = std::size_t{8} << 20;       ///< characters of all its pictures
  static constexpr std::size_t MOST_SECTION_BYTES = std::size_t{8} << 20;  ///< larger ones are not looked into

  std::vector<HeldSection> sections;
  bool isRead = false;  ///< the file could be read, to its end
  std::size_t leftOut = 0;
};

/// Reads the sections of a result after its summary. Holds one of them at a time, and what is shown of all of them
/// within the bounds above. Settings are named and not shown; what has no known form is named with its size and CRC.
HeldSections heldSections(const std::string& file, const TimeZone& zone);

/// The equipment that a record names, in order; what it does not name is left out.
std::vector<HeldValue> equipmentValues(const Veltra::EquipmentInformation& equipment, const TimeZone& zone);

/// The instruments that results name in their sections, a line each, in the order in which they are found.
std::vector<std::string> instrumentsOf(const std::vector<std::string>& files, const ReadingOptions& options);

}  // namespace Inspect
