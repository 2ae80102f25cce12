#include <libinspect/container/FileDiff.h>

#include <map>
#include <set>

#include <fmt/format.h>

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/container/Secrets.h>

namespace Inspect {
namespace {

struct Field {
  Field() = default;
  Field(Json::Value of, bool secret = false) : value(std::move(of)), isWithinSecret(secret) {}
  Json::Value value;
  bool isWithinSecret = false;
};
using Fields = std::map<std::string, Field>;

void flatten(const std::string& name, const Json::Value& value, bool isWithinSecret, Fields& out) {
  if (value.isObject()) {
    for (const std::string& key : value.getMemberNames()) {
      flatten(fmt::format("{}.{}", name, key), value[key], isWithinSecret || isSecret(key), out);
    }
  } else if (value.isArray()) {
    for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
      flatten(fmt::format("{}[{}]", name, i), value[i], isWithinSecret, out);
    }
  } else {
    out[name] = {value, isWithinSecret};
  }
}

/// What is compared of one section. If a record can be read, its fields replace its size and CRC.
Fields fieldsOf(const ByteSource& source, const SectionInfo& section, const FieldsOf& recordFields) {
  Fields fields;
  const std::string prefix = fmt::format("section[{}].", section.number);
  const PFile::Header& header = section.header;
  fields[prefix + "type"] = Json::Value(header.type);
  fields[prefix + "version"] = Json::Value(header.version);
  fields[prefix + "flags"] = Json::Value(header.flags);
  fields[prefix + "crc"] = Json::Value(toString(section.verdict));
  std::vector<uint8_t> bytes;
  std::string error;
  if (section.verdict == DataVerdict::OK && loadPayload(source, section, bytes, error)) {
    if (const std::optional<Json::Value> record = recordFields(bytes)) {
      flatten(prefix + "data", *record, false, fields);
      return fields;
    }
    fields[prefix + "data.crc"] =
        Json::Value(fmt::format("0x{:08x}", PFile::crc32Of(bytes.data(), static_cast<uint32_t>(bytes.size()))));
    fields[prefix + "data.size"] = Json::Value(static_cast<Json::UInt64>(bytes.size()));
  } else {
    fields[prefix + "data.crc"] = Json::Value(fmt::format("0x{:08x}", header.dataCrc));
    fields[prefix + "data.size"] = Json::Value(header.dataSize);
  }
  return fields;
}

}  // namespace

std::vector<Difference> differencesOf(const ByteSource& a, const ByteSource& b, const FieldsOf& recordFields,
                                      bool reveal) {
  const std::vector<SectionInfo> sectionsA = sectionsOf(a), sectionsB = sectionsOf(b);
  std::vector<Difference> differences;
  const std::size_t most = std::max(sectionsA.size(), sectionsB.size());
  for (std::size_t i = 0; i < most; ++i) {
    // One section of each file at a time: memory use follows the largest.
    Fields fieldsA, fieldsB;
    if (i < sectionsA.size()) fieldsA = fieldsOf(a, sectionsA[i], recordFields);
    if (i < sectionsB.size()) fieldsB = fieldsOf(b, sectionsB[i], recordFields);
    std::set<std::string> names;
    for (const auto& field : fieldsA) names.insert(field.first);
    for (const auto& field : fieldsB) names.insert(field.first);
    for (const std::string& name : names) {
      const Field& fieldA = fieldsA[name];
      const Field& fieldB = fieldsB[name];
      if (fieldA.value == fieldB.value) continue;
      const bool masks = !reveal && (fieldA.isWithinSecret || fieldB.isWithinSecret);
      differences.push_back(
          {name, masks ? masked(fieldA.value) : fieldA.value, masks ? masked(fieldB.value) : fieldB.value});
    }
  }
  return differences;
}

}  // namespace Inspect
