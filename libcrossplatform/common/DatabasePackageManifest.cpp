#include <libcrossplatform/common/DatabasePackageManifest.h>

#include <utility>

#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/DatabasePackageManifest";

bool takeNumber(const Json::Value& object, const char* key, uint16_t& out) {
  const boost::optional<unsigned> number = uintFromJson(object, key);
  if (!number || *number > UINT16_MAX) {
    logJsonFailure(SOURCE, __LINE__, key);
    return false;
  }
  out = static_cast<uint16_t>(*number);
  return true;
}

bool takeText(const Json::Value& object, const char* key, std::string& out) {
  boost::optional<std::string> text = stringFromJson(object, key);
  if (!text) {
    logJsonFailure(SOURCE, __LINE__, key);
    return false;
  }
  out = std::move(*text);
  return true;
}

}  // namespace

DatabasePackageManifestSummary::DatabasePackageManifestSummary(CustomerDatabaseVersion version, uint16_t release,
                                                               uint16_t buildNumber, uint16_t packageType,
                                                               std::string minReqFirmware)
    : customerVersion(std::move(version)),
      releaseType(release),
      build(buildNumber),
      type(packageType),
      minReqFirmwareVersion(std::move(minReqFirmware)) {}

bool DatabasePackageManifestSummary::operator==(const DatabasePackageManifestSummary& other) const {
  return customerVersion == other.customerVersion && releaseType == other.releaseType && build == other.build &&
         type == other.type && minReqFirmwareVersion == other.minReqFirmwareVersion;
}

std::string DatabasePackageManifestSummary::getFullVersionString() const {
  const CustomerDatabaseVersion numbers(customerVersion.major, customerVersion.minor, "");
  std::string text = numbers.getVersionString() + "." + std::to_string(build);
  if (!customerVersion.suffix.empty()) text += " " + customerVersion.suffix;
  return text;
}

template <class Fields>
void DatabasePackageManifestSummary::fields(Fields& f) {
  f.record("customerVersion", customerVersion);
  f.u16("releaseType", releaseType);
  f.u16("build", build);
  f.u16("type", type);
  f.text("minReqFirmwareVersion", minReqFirmwareVersion);
}

unsigned DatabasePackageManifestSummary::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus DatabasePackageManifestSummary::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

void DatabasePackageManifestSummary::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

Json::Value DatabasePackageManifestSummary::toJson(const Dump::DumpFlags& flags) const {
  Json::Value object = customerVersion.toJson(flags);
  object["releaseType"] = releaseType;
  object["build"] = build;
  object["type"] = type;
  object["minReqFirmwareVersion"] = minReqFirmwareVersion;
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

bool DatabasePackageManifestSummary::fromJson(Json::Value const& root) {
  const Json::Value* const object = root.isObject() ? jsonMember(root, JSON_ROOT_NAME) : nullptr;
  if (object == nullptr || !object->isObject()) {
    logJsonFailure(SOURCE, __LINE__, JSON_ROOT_NAME);
    return false;
  }
  DatabasePackageManifestSummary read = *this;
  const bool complete = read.customerVersion.fromJson(*object) &&
                        takeNumber(*object, "releaseType", read.releaseType) &&
                        takeNumber(*object, "build", read.build) && takeNumber(*object, "type", read.type) &&
                        takeText(*object, "minReqFirmwareVersion", read.minReqFirmwareVersion);
  if (complete) *this = std::move(read);
  return complete;
}

bool DatabasePackageManifestSummary::fromJson(const Json::Value* root) {
  if (root != nullptr) return fromJson(*root);
  logJsonFailure(SOURCE, __LINE__, nullptr);
  clear();
  return false;
}

DatabasePackageManifest::DatabasePackageManifest(DatabasePackageManifestSummary packageSummary,
                                                 DatabaseDescriptorList packageDescriptors)
    : summary(std::move(packageSummary)), descriptors(std::move(packageDescriptors)) {}

bool DatabasePackageManifest::operator==(const DatabasePackageManifest& other) const {
  return summary == other.summary && descriptors == other.descriptors;
}

template <class Fields>
void DatabasePackageManifest::fields(Fields& f) {
  f.record("summary", summary);
  f.record("descriptors", descriptors);
}

unsigned DatabasePackageManifest::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus DatabasePackageManifest::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

void DatabasePackageManifest::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

Json::Value DatabasePackageManifest::toJson(const Dump::DumpFlags& flags) const {
  Json::Value object = summary.toJson(flags);
  object[DatabaseDescriptorList::JSON_ROOT_NAME] = descriptors.toJson(flags)[DatabaseDescriptorList::JSON_ROOT_NAME];
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

}  // namespace Veltra
