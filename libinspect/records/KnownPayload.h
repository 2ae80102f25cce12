#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/records/RecordView.h>

namespace Inspect {

/// A picture as its first bytes describe it; the picture itself is not examined.
struct ImageInfo {
  const char* format;  ///< "PGM", "PNG" or "JPEG"
  uint32_t width;      ///< pixels, 1 or more, as the height
  uint32_t height;
};
/// @return none if the bytes do not begin with the whole header of such a picture
std::optional<ImageInfo> imageIn(const std::vector<uint8_t>& bytes);
/// "PNG image, 640 x 480 pixels"
std::string toString(const ImageInfo& image);

enum class PayloadKind {
  UNKNOWN,
  RECORD,  ///< begins with a known record, which may be damaged
  JSON,    ///< an object or array within the bounds of parseBoundedJson()
  IMAGE,
};

/// What a section's payload is, of the kinds that can be known. Its cost follows the size of the payload.
struct KnownPayload {
  PayloadKind kind = PayloadKind::UNKNOWN;
  DecodedRecord record;            ///< of RECORD
  Json::Value document;            ///< of JSON, secrets as they are: withoutSecrets() masks them
  std::optional<ImageInfo> image;  ///< of IMAGE
};

/// @param type   of the section; JSON is looked for in the types that hold it
/// @param bytes  the payload, uncompressed
KnownPayload knownPayload(uint16_t type, const std::vector<uint8_t>& bytes);

/// The values to show of a record or document, of which they are taken; null where there are none.
/// @param reveal  give secrets as they are; otherwise they are masked
Json::Value takeValues(KnownPayload& payload, bool reveal);
/// Adds what a payload is to the JSON of its section: its values under "record" or "json", or an "image".
/// @return false if it is none of these: its bytes are to be shown
bool addPayload(const KnownPayload& payload, Json::Value values, Json::Value& section);

/// What two payloads are compared by, as differencesOf() wants it: the fields of a record, measurements as text, or the
/// values of a JSON document; of an image what it is, its CRC and size.
std::optional<Json::Value> comparedFields(uint16_t type, const std::vector<uint8_t>& bytes);

}  // namespace Inspect
