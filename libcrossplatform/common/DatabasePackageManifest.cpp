#include <libcrossplatform/common/DatabasePackageManifest.h>

#include <utility>

#include <libcrossplatform/common/internal/JsonMembers.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/DatabasePackageManifest";

/// The members of the JSON object after those of the customer version.
template <class Members, class Record>
void walkJson(Members& m, Record& s) {
  m.integer("releaseType", s.releaseType);
  m.integer("build", s.build);
  m.integer("type", s.type);
  m.text("minReqFirmwareVersion", s.minReqFirmwareVersion);
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
  MemberWriter members(object);
  walkJson(members, *this);
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

bool DatabasePackageManifestSummary::fromJson(Json::Value const& root) {
  const Json::Value* const object = root.isObject() ? jsonMember(root, JSON_ROOT_NAME) : nullptr;
  if (object == nullptr || !object->isObject()) {
    logJsonFailure(SOURCE, __LINE__, JSON_ROOT_NAME);
    return false;
  }
  DatabasePackageManifestSummary read = *this;
  if (!read.customerVersion.fromJson(*object)) return false;
  MemberReader members(*object, MemberRule::EXACT, SOURCE, __LINE__);
  walkJson(members, read);
  if (members.ok()) *this = std::move(read);
  return members.ok();
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
