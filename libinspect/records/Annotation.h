#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

/// A stretch of a file and what it means.
struct AnnotatedStretch {
  uint64_t offset;  ///< in the file; for fields of a compressed record, in its uncompressed bytes
  uint64_t size;
  const char* kind;   ///< wire kind: "u8", "string", ...; "data" for a stretch that is not split into fields
  std::string field;  ///< "section[1].data.ResultSummary.status"
  Json::Value value;
  const uint8_t* bytes;  ///< `size` bytes, valid during the call; null for a stretch that is not split into fields
  std::string words;     ///< what the value means, where a number is not enough: a section's flags
};
Json::Value toJson(const AnnotatedStretch& stretch);
/// The columns of that object in order.
const std::vector<std::string>& stretchColumns();
using OnStretch = std::function<void(const AnnotatedStretch&)>;

/// Reports every field of a section, header first, in the order of its bytes.
/// @param reveal  give secrets as they are; otherwise their characters, as values and bytes, are asterisks
void annotate(const ByteSource& source, const SectionInfo& section, bool reveal, const OnStretch& onStretch);

}  // namespace Inspect
