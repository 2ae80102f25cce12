#pragma once

// Threads: any number may call these functions at once, each with a manifest of its own.

#include <cstdint>

#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/PFileSectionTypes.h>
#include <libcrossplatform/common/PFileTypes.h>

namespace Veltra {

/// Version a manifest section is written with. Readers ignore it: the records have their own.
constexpr uint16_t MANIFEST_SECTION_VERSION = 1;

/// Writes a manifest as the one section of a new container file, uncompressed and not synced to the disk. An old file
/// of that name is truncated in place.
/// @param manifest     not changed
/// @param sectionType  PFile::SECTION_LIMIT_MANIFEST or PFile::SECTION_CABLE_MANIFEST; others are not read back
/// @return 0; -1 the file could not be created or not wholly written, or the manifest exceeds 4 GiB
[[nodiscard]] VELTRA_EXPORT int writeManifestFile(DatabasePackageManifest& manifest, uint16_t sectionType,
                                                  char const* path);

/// Reads the manifest of a package: the first section after the file header.
/// Two faults that a CRC-32 does not show are fatal assertions: a section compressed from nothing, and a path without
/// its terminating zero (DatabaseDescriptor::deserialize()).
/// @param manifest  the package's after READER_OK; otherwise unchanged or partly filled: clear() it
/// @return READER_OK; READER_ERROR_OPENING_FILE it cannot be opened, or does not begin with an intact file header;
///         READER_WRONG_FILE_TYPE no section follows, or it is not intact or not of a manifest;
///         READER_VERSION_TOO_NEW; READER_CORRUPT
[[nodiscard]] VELTRA_EXPORT PFile::PFileReaderStatus readManifestFile(DatabasePackageManifest& manifest,
                                                                      char const* path);

}  // namespace Veltra
