#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/common/EquipmentInformation.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/job/ManyFiles.h>
#include <libinspect/report/Picture.h>
#include <libinspect/report/TimeZone.h>

namespace Inspect {

/// A named text of a table.
struct HeldValue {
  std::string name;
  std::string text;
};

/// Values that have the same names within several objects: a line for each object.
struct HeldTable {
  std::string name;
  std::vector<std::string> columns;
  std::vector<std::vector<std::string>> lines;  ///< the name of the object, and its values in the order of the columns
};

/// What a section of a result is for people.
enum class HeldKind { DETAILS, PICTURE, EQUIPMENT, SETTINGS, OPAQUE };

/// What a section of a result holds, for people.
struct HeldSection {
  HeldKind kind = HeldKind::OPAQUE;
  std::string name;                       ///< of its type
  std::string words;                      ///< what there is to say of it besides the table or picture
  std::string fault;                      ///< of a picture: why it is not shown
  std::vector<HeldValue> values;          ///< of a known record or of JSON, secrets masked
  std::vector<HeldTable> tables;          ///< what of it is better seen so
  std::vector<JsonOversight> oversights;  ///< of JSON: what these values do not tell
  Picture picture;                        ///< no uri: there is none

  bool isShown() const { return !values.empty() || !tables.empty() || !picture.uri.empty(); }
};

/// What there is to show of a result beyond its summary.
struct HeldSections {
  std::vector<HeldSection> sections;
  std::size_t leftOut = 0;  ///< sections
  std::string error;        ///< the file, and why it could not be read to its end; empty if it could
};

/// How much may still be shown of a link.
struct HeldBudget {
  std::size_t sections = 100;
  std::size_t values = 2000;                            ///< of tables
  std::size_t pictures = std::size_t{8} * 1024 * 1024;  ///< characters of their addresses
  uint64_t pixels = uint64_t{32} * 1024 * 1024;         ///< of pictures, shown or decoded in vain
};

/// Reads the sections of an intact result after its summary, one at a time; those of more than 8 MiB are not looked
/// into. Settings are named and not shown; the words of what has no known form are its size and CRC.
/// @param left  what is shown is taken from it
HeldSections heldSections(const std::string& file, const TimeZone& zone, HeldBudget& left);

/// The equipment that a record names, in order; what it does not name is left out.
std::vector<HeldValue> equipmentValues(const Veltra::EquipmentInformation& equipment, const TimeZone& zone);

/// The instruments that results name in their sections, a line each, in the order in which they are found.
std::vector<std::string> instrumentsOf(const std::vector<std::string>& files, const ReadingOptions& options);

}  // namespace Inspect
