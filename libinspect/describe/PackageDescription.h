#pragma once

#include <string>

#include <json/value.h>

#include <libcrossplatform/common/DatabasePackageManifest.h>

namespace Inspect {

/// Reads a package's description: {"version": "V3.12 beta", "releaseType": 1, "build": 407, "type": 0, "firmware":
/// "V5.1", "databases": [{"version": [4, 118, 2, 407], "type": 1, "path": "limits/copper.db", "firmware": "V5.0"},
/// ...]}.
/// @return false, with `error` naming the key, what was expected and what was found
[[nodiscard]] bool parsePackage(const std::string& text, Veltra::DatabasePackageManifest& manifest, std::string& error);

/// The same form, made from a manifest.
Json::Value packageJson(const Veltra::DatabasePackageManifest& manifest);

/// Writes a package and reads it back, since the writing itself reports no failure.
/// @param type  PFile::SECTION_LIMIT_MANIFEST or PFile::SECTION_CABLE_MANIFEST
/// @return false, with `error` filled, when the file does not contain what was intended
[[nodiscard]] bool writePackage(Veltra::DatabasePackageManifest& manifest, uint16_t type, const std::string& path,
                                std::string& error);

}  // namespace Inspect
