#include <libinspect/describe/PackageDescription.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>

#include <fmt/format.h>

#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/describe/ObjectReader.h>

namespace Inspect {
namespace {

using Veltra::DatabaseDescriptor;
using Veltra::DatabasePackageManifest;

constexpr int64_t MOST_16 = std::numeric_limits<uint16_t>::max();

void parseVersion(ObjectReader& in, Veltra::DatabaseVersion& version) {
  const Json::Value* const v = in.take("version");
  uint16_t* const parts[] = {&version.schema, &version.content, &version.object, &version.build};
  if (v == nullptr) return;
  bool ok = v->isArray() && v->size() == 4;
  for (Json::ArrayIndex i = 0; ok && i < 4; ++i) {
    const Json::Value& part = (*v)[i];
    ok = part.isUInt() && part.asUInt() <= MOST_16;
    if (ok) *parts[i] = static_cast<uint16_t>(part.asUInt());
  }
  if (!ok)
    in.fail("version", *v,
            fmt::format("a list of four numbers from 0 to {} (schema, content, object, build)", MOST_16));
}

void parseDatabase(const Json::Value& json, const std::string& text, const std::string& path,
                   DatabaseDescriptor& database, std::string& error) {
  ObjectReader in(json, text, path, error);
  parseVersion(in, database.version);
  in.integer("type", database.dbType, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
  in.text("path", database.filePath);
  in.text("firmware", database.minReqFirmwareVersion);
  in.finish();
  const bool fits = database.filePath.size() < DatabaseDescriptor::MAX_PATH_LENGTH;
  if (in.ok() && (database.filePath.empty() || !fits)) {
    in.fail("path", database.filePath.size() > 80 ? Json::Value("...") : Json::Value(database.filePath),
            fmt::format("a path of 1 to {} bytes", DatabaseDescriptor::MAX_PATH_LENGTH - 1));
  }
}

void parseCustomerVersion(ObjectReader& in, Veltra::CustomerDatabaseVersion& version) {
  std::string text;
  in.text("version", text);
  if (in.ok() && !(version.setVersionFromString(text) && version.getVersionString() == text)) {
    in.fail("version", text, "a version such as \"V3.12\" or \"V3.12 beta\"");
  }
}

}  // namespace

bool parsePackage(const std::string& text, DatabasePackageManifest& manifest, std::string& error) {
  Json::Value root;
  error.clear();
  if (!parseWholeJson(text, root, error)) return false;
  if (root.isObject()) root.removeMember("schema");  // printed packages have it
  ObjectReader in(root, text, "package", error);
  Veltra::DatabasePackageManifestSummary& summary = manifest.summary;
  parseCustomerVersion(in, summary.customerVersion);
  in.integer("releaseType", summary.releaseType, 0, MOST_16);
  in.integer("build", summary.build, 0, MOST_16);
  in.integer("type", summary.type, 0, MOST_16);
  in.text("firmware", summary.minReqFirmwareVersion);
  const Json::Value* const databases = in.take("databases");
  const bool isList = databases != nullptr && databases->isArray();
  constexpr uint32_t MOST_ENTRIES = Veltra::DatabaseDescriptorList::MAX_ENTRIES;
  if (!isList || databases->empty() || databases->size() > MOST_ENTRIES) {
    in.fail("databases", isList ? Json::Value(databases->size()) : Json::Value(),
            fmt::format("a list of 1 to {} databases", MOST_ENTRIES));
  }
  for (Json::ArrayIndex i = 0; isList && in.ok() && i < databases->size(); ++i) {
    auto database = std::make_unique<DatabaseDescriptor>();
    parseDatabase((*databases)[i], text, fmt::format("databases[{}]", i), *database, error);
    manifest.descriptors.add(std::move(database));
  }
  in.finish();
  return in.ok();
}

Json::Value packageJson(const DatabasePackageManifest& manifest) {
  Json::Value json(Json::objectValue);
  const Veltra::DatabasePackageManifestSummary& summary = manifest.summary;
  json["version"] = summary.getVersionString();
  json["releaseType"] = summary.releaseType;
  json["build"] = summary.build;
  json["type"] = summary.type;
  json["firmware"] = summary.minReqFirmwareVersion;
  json["databases"] = Json::Value(Json::arrayValue);
  for (const auto& database : manifest.descriptors) {
    Json::Value entry(Json::objectValue);
    for (const uint16_t part :
         {database->version.schema, database->version.content, database->version.object, database->version.build}) {
      entry["version"].append(part);
    }
    entry["type"] = static_cast<int>(database->dbType);
    entry["path"] = database->filePath;
    entry["firmware"] = database->minReqFirmwareVersion;
    json["databases"].append(entry);
  }
  return json;
}

bool writePackage(DatabasePackageManifest& manifest, uint16_t type, const std::string& path, std::string& error) {
  Veltra::FileReplacement file;
  DatabasePackageManifest written;
  error.clear();
  const auto failed = [&] {
    error = fmt::format("{}: {}", path, std::strerror(errno));
    return false;
  };
  if (!file.open(path) || Veltra::writeManifestFile(manifest, type, file.temporaryPath().c_str()) != 0) return failed();
  const PFile::PFileReaderStatus status = Veltra::readManifestFile(written, file.temporaryPath().c_str());
  if (status == PFile::READER_OK && written == manifest) return file.commit() || failed();
  error = fmt::format("{}: what was written does not read back: {}", path,
                      status == PFile::READER_OK ? "other content" : toString(status));
  return false;
}

}  // namespace Inspect
