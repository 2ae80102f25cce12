#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

/// A stretch of a file beside what it means.
struct AnnotatedStretch {
  uint64_t offset;  ///< in the file; of a compressed record's fields in its uncompressed bytes
  uint64_t size;
  const char* kind;   ///< wire kind: "u8", "string", ...; "data" of a stretch that is not taken apart
  std::string field;  ///< "section[1].data.ResultSummary.status"
  Json::Value value;
  const uint8_t* bytes;  ///< `size` of them, good while the stretch is told; null for one that is not taken apart
};
using OnStretch = std::function<void(const AnnotatedStretch&)>;

/// Tells every field of a section, header first, in the order of its bytes.
void annotate(const ByteSource& source, const SectionInfo& section, const OnStretch& onStretch);

}  // namespace Inspect
