#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/container/ByteSource.h>

namespace Inspect {

/// One field in which two files differ; null where one lacks it.
struct Difference {
  std::string field;
  Json::Value a;
  Json::Value b;
};

/// The fields of the record a payload holds; none if it does not hold a known record, or a damaged one.
using FieldsOf = std::function<std::optional<Json::Value>(const std::vector<uint8_t>& payload)>;

/// Compares two containers field by field: sizes, section headers, records by their fields, other data by its bytes.
/// @param reveal  give secrets as they are; otherwise those that differ are masked
std::vector<Difference> differencesOf(const ByteSource& a, const ByteSource& b, const FieldsOf& recordFields,
                                      bool reveal);

}  // namespace Inspect
