#include <libcrossplatform/common/DatabaseDescriptor.h>

#include <utility>

#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/DatabaseDescriptor";

/// A counted zero-terminated string with its own rules: its length is limited, and the path is all but its last byte.
void readPath(Marshal::FieldReader& f, std::string& path) {
  constexpr char NAME[] = "filePath";
  uint32_t size = 0;
  std::string temp;
  if (!f.length(NAME, size)) return;
  if (size == 0 || size > DatabaseDescriptor::MAX_PATH_LENGTH) return f.fail(Marshal::STREAM_WRONG_ELEMENT);
  if (!f.run(NAME, size, temp)) return;
  if (temp[temp.length() - 1] != '\0') assertFatal("temp[temp.length() - 1] == '\\0'", SOURCE, __LINE__);
  temp.pop_back();
  path = std::move(temp);
}

template <class List>
auto* firstOfType(List& list, DATABASE_TYPE type) {
  std::size_t i = 0;
  while (i < list.size() && list[i].dbType != type) ++i;
  return i < list.size() ? &list[i] : nullptr;
}

}  // namespace

DatabaseDescriptor::DatabaseDescriptor(const DatabaseVersion& databaseVersion, DATABASE_TYPE type, std::string path,
                                       std::string minReqFirmware)
    : version(databaseVersion),
      dbType(type),
      filePath(std::move(path)),
      minReqFirmwareVersion(std::move(minReqFirmware)) {}

bool DatabaseDescriptor::operator==(const DatabaseDescriptor& other) const {
  return version == other.version && dbType == other.dbType && filePath == other.filePath &&
         minReqFirmwareVersion == other.minReqFirmwareVersion;
}

template <class Fields>
void DatabaseDescriptor::fields(Fields& f) {
  f.record("version", version);
  f.i32("dbType", dbType);
  if constexpr (Fields::READING) {
    readPath(f, filePath);
  } else {
    f.terminatedText("filePath", filePath);
  }
  f.text("minReqFirmwareVersion", minReqFirmwareVersion);
}

unsigned DatabaseDescriptor::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writePlain(*this, out);
}

Marshal::StreamOpStatus DatabaseDescriptor::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readPlain(*this, in);
}

void DatabaseDescriptor::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

Json::Value DatabaseDescriptor::toJson(const Dump::DumpFlags& flags) const {
  Json::Value object = version.toJson(flags);
  object["dbType"] = static_cast<int>(dbType);
  object["filePath"] = filePath;
  object["minReqFirmwareVersion"] = minReqFirmwareVersion;
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

DatabaseDescriptor* DatabaseDescriptorList::getDatabaseDescriptor(DATABASE_TYPE type) {
  return firstOfType(*this, type);
}

const DatabaseDescriptor* DatabaseDescriptorList::getDatabaseDescriptor(DATABASE_TYPE type) const {
  return firstOfType(*this, type);
}

template <class Fields>
void DatabaseDescriptorList::fields(Fields& f) {
  if constexpr (Fields::READING) {
    uint32_t count = 0;
    f.u32("count", count);
    if (f.streamStatus() != Marshal::STREAM_OK) return f.fail(Marshal::STREAM_SHORT);
    // Every package has a database: an empty list can be written, but not read back.
    if (count == 0 || count > MAX_ENTRIES) return f.fail(Marshal::STREAM_WRONG_ELEMENT);
    readElements(f, count);
  } else {
    f.u32("count", size());
    writeElements(f);
  }
}

unsigned DatabaseDescriptorList::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus DatabaseDescriptorList::deserialize(Marshal::IObjectReader& in) {
  const Marshal::StreamOpStatus status = Marshal::readHeaded(*this, in);
  if (status != Marshal::STREAM_OK) clear();
  return status;
}

void DatabaseDescriptorList::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

Json::Value DatabaseDescriptorList::toJson(const Dump::DumpFlags& flags) const {
  Json::Value descriptors(Json::arrayValue);
  for (const std::unique_ptr<DatabaseDescriptor>& d : *this) descriptors.append(d->toJson(flags));
  return rootedJson(JSON_ROOT_NAME, std::move(descriptors));
}

}  // namespace Veltra
