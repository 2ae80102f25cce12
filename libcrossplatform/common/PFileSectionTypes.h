#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <string_view>

#include <gsl/span>

#include <libcrossplatform/logging/Export.h>

namespace PFile {

///@{
/// Section types this library itself writes and looks for. All the others are in the table of names.
constexpr uint16_t SECTION_LIMIT_MANIFEST = 101;
constexpr uint16_t SECTION_CABLE_MANIFEST = 102;
constexpr uint16_t SECTION_RESULT_SUMMARY = 200;
///@}

/// Whether sections of a type hold a database package.
constexpr bool isManifestSection(unsigned int id) {
  return id == SECTION_LIMIT_MANIFEST || id == SECTION_CABLE_MANIFEST;
}

/// What is known of a section type. Every function below, the versions that result files are checked against and the
/// lists of the `veltra` command read these rows.
struct SectionType {
  static constexpr int32_t UNVERSIONED = -1;  ///< newestVersion of a type whose versions are not compared

  ///@{
  /// Bits of `classes`: what isEnd2Section(), isOtdrRawSection() and isOtdrTestSection() answer.
  static constexpr uint8_t CLASS_END_2 = 1;
  static constexpr uint8_t CLASS_OTDR_RAW = 2;
  static constexpr uint8_t CLASS_OTDR_TEST = 4;
  ///@}

  uint16_t id;            ///< the number in a section header
  char const* name;       ///< kept exactly as files and logs carry it; null for a type without one
  int32_t newestVersion;  ///< newest content version this library reads, 0 to 65535; or UNVERSIONED
  uint8_t classes;        ///< any of the bits above
};

/// All known types by ascending id. The file header (1) is not among them.
VELTRA_EXPORT gsl::span<const SectionType> sectionTypes();
/// @return null for an unknown type; otherwise a row that lives as long as the program
VELTRA_EXPORT const SectionType* findSectionType(unsigned int id);
/// The type of exactly that name. @return null when there is none
VELTRA_EXPORT const SectionType* findSectionType(std::string_view name);

/// Name of a section type.
/// @return null for a type without a name, the file header (1) among them: the caller must handle it
VELTRA_EXPORT char const* sectionIdToString(unsigned short id);

/// 303 to 305, 309 to 311, 318 to 320, 324, 327, 328.
VELTRA_EXPORT bool isEnd2Section(unsigned int id);
/// 302, 305, 308, 311, 314, 317, 320.
VELTRA_EXPORT bool isOtdrRawSection(unsigned int id);
/// 300, 303, 306, 309, 312, 315, 318, 330.
VELTRA_EXPORT bool isOtdrTestSection(unsigned int id);

}  // namespace PFile
