#pragma once

#include <cstdint>

#include <libcrossplatform/logging/Export.h>

namespace PFile {

// Section types this library itself writes and looks for. All the others are in the table of names.
constexpr uint16_t SECTION_LIMIT_MANIFEST = 101;
constexpr uint16_t SECTION_CABLE_MANIFEST = 102;
constexpr uint16_t SECTION_RESULT_SUMMARY = 200;

/// Name of a section type, kept exactly as files and logs carry it.
/// @return null for a type without a name, the file header (1) among them: the caller must handle it
VELTRA_EXPORT char const* sectionIdToString(unsigned short id);

// The three sets are kept as listed, not derived from the names: OTDR_BIDI_RAW is no raw section and the OTDR_BIDI
// sections are no end-2 sections, while OTDR_BIDI_TEST is a test section.

/// 303 to 305, 309 to 311, 318 to 320, 324, 327, 328.
VELTRA_EXPORT bool isEnd2Section(unsigned int id);
/// 302, 305, 308, 311, 314, 317, 320.
VELTRA_EXPORT bool isOtdrRawSection(unsigned int id);
/// 300, 303, 306, 309, 312, 315, 318, 330.
VELTRA_EXPORT bool isOtdrTestSection(unsigned int id);

}  // namespace PFile
