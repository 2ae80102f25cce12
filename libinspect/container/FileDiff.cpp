#include <libinspect/container/FileDiff.h>

#include <map>
#include <set>

#include <fmt/format.h>

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {
namespace {

using Fields = std::map<std::string, Json::Value>;

void flatten(const std::string& name, const Json::Value& value, Fields& out) {
  if (value.isObject()) {
    for (const std::string& key : value.getMemberNames()) flatten(fmt::format("{}.{}", name, key), value[key], out);
  } else if (value.isArray()) {
    for (Json::ArrayIndex i = 0; i < value.size(); ++i) flatten(fmt::format("{}[{}]", name, i), value[i], out);
  } else {
    out[name] = value;
  }
}

/// What is compared of one section. If a record can be read, its fields replace its size and CRC.
Fields fieldsOf(const ByteSource& source, const SectionInfo& section, const FieldsOf& recordFields) {
  Fields fields;
  const std::string prefix = fmt::format("section[{}].", section.number);
  const PFile::Header& header = section.header;
  fields[prefix + "type"] = header.type;
  fields[prefix + "version"] = header.version;
  fields[prefix + "flags"] = header.flags;
  fields[prefix + "crc"] = toString(section.verdict);
  std::vector<uint8_t> bytes;
  std::string error;
  if (section.verdict == DataVerdict::OK && loadPayload(source, section, bytes, error)) {
    if (const std::optional<Json::Value> record = recordFields(bytes)) {
      flatten(prefix + "data", *record, fields);
      return fields;
    }
    fields[prefix + "data.crc"] =
        fmt::format("0x{:08x}", PFile::crc32Of(bytes.data(), static_cast<uint32_t>(bytes.size())));
    fields[prefix + "data.size"] = static_cast<Json::UInt64>(bytes.size());
  } else {
    fields[prefix + "data.crc"] = fmt::format("0x{:08x}", header.dataCrc);
    fields[prefix + "data.size"] = header.dataSize;
  }
  return fields;
}

}  // namespace

std::vector<Difference> differencesOf(const ByteSource& a, const ByteSource& b, const FieldsOf& recordFields) {
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
      const Json::Value valueA = fieldsA.count(name) > 0 ? fieldsA[name] : Json::Value();
      const Json::Value valueB = fieldsB.count(name) > 0 ? fieldsB[name] : Json::Value();
      if (valueA != valueB) differences.push_back({name, valueA, valueB});
    }
  }
  return differences;
}

}  // namespace Inspect
