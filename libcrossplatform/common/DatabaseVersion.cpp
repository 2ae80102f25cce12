#include <libcrossplatform/common/DatabaseVersion.h>

#include <string_view>
#include <utility>

#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char SOURCE[] = "libcrossplatform/common/DatabaseVersion";
constexpr char VERSION_KEY[] = "Version";

uint16_t leadingNumber(std::string_view text) {
  uint32_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    number = (number * 10 + static_cast<uint32_t>(c - '0')) & 0xFFFF;
  }
  return static_cast<uint16_t>(number);
}

/// @return false when there is no text to read
bool takeNumber(std::string_view text, uint16_t& out) {
  if (text.empty()) return false;
  out = leadingNumber(text);
  return true;
}

}  // namespace

DatabaseVersion::DatabaseVersion(uint16_t schemaNumber, uint16_t contentNumber, uint16_t objectNumber,
                                 uint16_t buildNumber)
    : schema{schemaNumber}, content{contentNumber}, object{objectNumber}, build{buildNumber} {}

bool DatabaseVersion::operator==(const DatabaseVersion& other) const {
  return schema == other.schema && content == other.content && object == other.object && build == other.build;
}

template <class Fields>
void DatabaseVersion::fields(Fields& f) {
  f.u16("schema", schema);
  f.u16("content", content);
  f.u16("object", object);
  f.u16("build", build);
}

unsigned DatabaseVersion::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus DatabaseVersion::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

void DatabaseVersion::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

Json::Value DatabaseVersion::toJson(const Dump::DumpFlags&) const {
  Json::Value numbers(Json::objectValue);
  numbers["schema"] = schema;
  numbers["content"] = content;
  numbers["object"] = object;
  numbers["build"] = build;
  return rootedJson(JSON_ROOT_NAME, std::move(numbers));
}

CustomerDatabaseVersion::CustomerDatabaseVersion(uint16_t majorNumber, uint16_t minorNumber, std::string suffixText)
    : major{majorNumber}, minor{minorNumber}, suffix(std::move(suffixText)) {}

bool CustomerDatabaseVersion::operator==(const CustomerDatabaseVersion& other) const {
  return major == other.major && minor == other.minor && suffix == other.suffix;
}

std::string CustomerDatabaseVersion::getVersionString() const {
  std::string text = "V" + std::to_string(major) + "." + std::to_string(minor);
  if (!suffix.empty()) text += " " + suffix;
  return text;
}

bool CustomerDatabaseVersion::setVersionFromString(std::string const& s) {
  constexpr std::size_t NOWHERE = std::string_view::npos;
  const std::string_view text = s;
  const std::size_t letter = text.find('V');
  const std::size_t dot = text.find('.');
  const std::size_t space = dot == NOWHERE ? NOWHERE : text.find(' ', dot);

  std::string_view majorText;
  std::string_view minorText;
  if (dot != NOWHERE) {
    if (letter < dot) majorText = text.substr(letter + 1, dot - letter - 1);
    minorText = text.substr(dot + 1, space == NOWHERE ? NOWHERE : space - dot - 1);
  }
  const bool hasMajor = takeNumber(majorText, major);
  const bool hasMinor = takeNumber(minorText, minor);
  // Without a space the old suffix stays, so that a bare number can be set under a suffix.
  if (space != NOWHERE) suffix = std::string(text.substr(space + 1));
  return hasMajor && hasMinor;
}

template <class Fields>
void CustomerDatabaseVersion::fields(Fields& f) {
  f.u16("major", major);
  f.u16("minor", minor);
  f.text("suffix", suffix);
}

unsigned CustomerDatabaseVersion::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writePlain(*this, out);
}

Marshal::StreamOpStatus CustomerDatabaseVersion::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readPlain(*this, in);
}

void CustomerDatabaseVersion::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  Dump::dumpAsJson(*this, formatter, flags);
}

Json::Value CustomerDatabaseVersion::toJson(const Dump::DumpFlags&) const {
  return rootedJson(JSON_ROOT_NAME, rootedJson(VERSION_KEY, getVersionString()));
}

bool CustomerDatabaseVersion::fromJson(Json::Value const& root) {
  const Json::Value* const object = root.isObject() ? jsonMember(root, JSON_ROOT_NAME) : nullptr;
  if (object == nullptr || !object->isObject()) {
    logJsonFailure(SOURCE, __LINE__, JSON_ROOT_NAME);
    return false;
  }
  const boost::optional<std::string> text = stringFromJson(*object, VERSION_KEY);
  CustomerDatabaseVersion read = *this;
  if (!text || !read.setVersionFromString(*text)) {
    logJsonFailure(SOURCE, __LINE__, VERSION_KEY);
    return false;
  }
  *this = std::move(read);
  return true;
}

bool CustomerDatabaseVersion::fromJson(const Json::Value* root) {
  if (root != nullptr) return fromJson(*root);
  logJsonFailure(SOURCE, __LINE__, nullptr);
  clear();
  return false;
}

}  // namespace Veltra
