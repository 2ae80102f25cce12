#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

/// One field in which two files differ; null where one lacks it.
struct Difference {
  std::string field;  ///< a very long one without its middle
  Json::Value a;
  Json::Value b;
  bool isValue = false;  ///< of a payload, or of which sections there are; otherwise of how the same is stored
};
using OnDifference = std::function<void(const Difference&)>;

/// The values a payload is compared by; none if it is compared by its CRC and size.
/// @param type  of its section
using FieldsOf = std::function<std::optional<Json::Value>(uint16_t type, const std::vector<uint8_t>& payload)>;

/// What was compared.
struct Comparison {
  ContainerReport a;
  ContainerReport b;
  uint64_t differences = 0;
};

/// Compares two containers field by field: section headers, payloads by the values of `fieldsOf`, or else by CRC and
/// size, and what follows the last section. Without a difference every byte is the same. Memory use follows the largest
/// section.
/// @param reveal  give secrets as they are; otherwise those that differ are masked
Comparison differencesOf(const ByteSource& a, const ByteSource& b, const FieldsOf& fieldsOf, bool reveal,
                         const OnDifference& onDifference);

}  // namespace Inspect
