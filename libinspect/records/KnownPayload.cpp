#include <libinspect/records/KnownPayload.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/WireBytes.h>
#include <libinspect/container/Secrets.h>

namespace Inspect {
namespace {

using Bytes = std::vector<uint8_t>;

bool beginsWith(const Bytes& bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

/// Whether sections of a type may hold JSON: SECTTYPE_COPINFO_JSON and SECTTYPE_COPMEAS_JSON.
bool hasJson(uint16_t type) {
  return type == 910 || type == 920;
}

std::optional<ImageInfo> imageOf(const char* format, uint32_t width, uint32_t height) {
  if (width == 0 || height == 0) return std::nullopt;
  return ImageInfo{format, width, height};
}

std::optional<ImageInfo> pngIn(const Bytes& bytes) {
  constexpr std::string_view BEGIN("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR", 16);
  constexpr uint32_t MOST = 0x7FFFFFFF;
  if (!beginsWith(bytes, BEGIN) || bytes.size() < BEGIN.size() + 8) return std::nullopt;
  const auto width = Marshal::loadBig<uint32_t>(&bytes[BEGIN.size()]);
  const auto height = Marshal::loadBig<uint32_t>(&bytes[BEGIN.size() + 4]);
  return width <= MOST && height <= MOST ? imageOf("PNG", width, height) : std::nullopt;
}

/// The next whole number of a PGM header, after white space and comments.
bool takeNumber(std::string_view& header, uint32_t& number) {
  constexpr std::size_t MOST_DIGITS = 9;
  constexpr char SPACES[] = " \t\r\n\v\f";
  const std::size_t before = header.size();
  for (;;) {
    header.remove_prefix(std::min(header.find_first_not_of(SPACES), header.size()));
    if (header.empty() || header.front() != '#') break;
    header.remove_prefix(std::min(header.find_first_of("\r\n"), header.size()));
  }
  const std::size_t digits = std::min(header.find_first_not_of("0123456789"), header.size());
  if (header.size() == before || digits == 0 || digits > MOST_DIGITS || digits == header.size()) return false;
  number = 0;
  for (const char c : header.substr(0, digits)) number = 10 * number + static_cast<uint32_t>(c - '0');
  header.remove_prefix(digits);
  return true;
}

std::optional<ImageInfo> pgmIn(const Bytes& bytes) {
  constexpr std::size_t MOST_HEADER = 4096;
  constexpr uint32_t MOST_GRAY = 65535;
  if (!beginsWith(bytes, "P5") && !beginsWith(bytes, "P2")) return std::nullopt;
  std::string_view header(reinterpret_cast<const char*>(bytes.data()), std::min(bytes.size(), MOST_HEADER));
  header.remove_prefix(2);
  uint32_t width = 0, height = 0, most = 0;
  const bool isWhole = takeNumber(header, width) && takeNumber(header, height) && takeNumber(header, most);
  return isWhole && most > 0 && most <= MOST_GRAY ? imageOf("PGM", width, height) : std::nullopt;
}

/// Goes from segment to segment to the one that begins the frame.
std::optional<ImageInfo> jpegIn(const Bytes& bytes) {
  constexpr std::size_t FRAME_BYTES = 9;  // marker 2, length 2, precision 1, height 2, width 2
  if (!beginsWith(bytes, "\xFF\xD8\xFF")) return std::nullopt;
  for (std::size_t at = 2; bytes.size() - at >= FRAME_BYTES && bytes[at] == 0xFF;) {
    const uint8_t marker = bytes[at + 1];
    if (marker == 0xFF) {  // filler before a marker
      ++at;
      continue;
    }
    const bool isOther = marker == 0xC4 || marker == 0xC8 || marker == 0xCC;
    if (marker >= 0xC0 && marker <= 0xCF && !isOther) {
      const auto height = Marshal::loadBig<uint16_t>(&bytes[at + 5]);
      return imageOf("JPEG", Marshal::loadBig<uint16_t>(&bytes[at + 7]), height);
    }
    const std::size_t length = Marshal::loadBig<uint16_t>(&bytes[at + 2]);
    const bool hasLength = marker != 0xDA && marker > 0x01 && (marker < 0xD0 || marker > 0xD9);
    if (!hasLength || length < 2 || length > bytes.size() - at - 2) break;
    at += 2 + length;
  }
  return std::nullopt;
}

/// Puts its text in the place of each measurement.
void useTexts(Json::Value& value) {
  if (isMeasurement(value)) {
    Json::Value text = value["text"];
    value.swap(text);
  } else if (value.isObject() || value.isArray()) {
    for (Json::Value& child : value) useTexts(child);
  }
}

}  // namespace

std::optional<ImageInfo> imageIn(const Bytes& bytes) {
  for (const auto format : {pngIn, pgmIn, jpegIn}) {
    if (const std::optional<ImageInfo> image = format(bytes)) return image;
  }
  return std::nullopt;
}

std::string toString(const ImageInfo& image) {
  return fmt::format("{} image, {} x {} pixels", image.format, image.width, image.height);
}

KnownPayload knownPayload(uint16_t type, const Bytes& bytes) {
  KnownPayload payload;
  payload.record = decodeRecord(bytes);
  if (payload.record.outcome != DecodedRecord::NO_RECORD) {
    payload.kind = PayloadKind::RECORD;
  } else if (hasJson(type) && Veltra::parseBoundedJson(std::string(bytes.begin(), bytes.end()), payload.document)) {
    payload.kind = PayloadKind::JSON;
  } else if ((payload.image = imageIn(bytes))) {
    payload.kind = PayloadKind::IMAGE;
  }
  return payload;
}

std::optional<Json::Value> comparedFields(uint16_t type, const Bytes& bytes) {
  KnownPayload payload = knownPayload(type, bytes);
  Json::Value fields;
  switch (payload.kind) {
    case PayloadKind::RECORD:
      fields = payload.record.toJson(true);
      useTexts(fields);
      break;
    case PayloadKind::JSON:
      fields.swap(payload.document);
      break;
    case PayloadKind::IMAGE:
      fields["image"] = toString(*payload.image);
      fields["crc"] = fmt::format("0x{:08x}", PFile::crc32Of(bytes.data(), static_cast<uint32_t>(bytes.size())));
      fields["size"] = static_cast<Json::UInt64>(bytes.size());
      break;
    case PayloadKind::UNKNOWN:
      break;
  }
  if (fields.isNull()) return std::nullopt;
  return fields;
}

Json::Value takeValues(KnownPayload& payload, bool reveal) {
  if (payload.kind != PayloadKind::JSON) return payload.record.toJson(reveal);
  return reveal ? std::move(payload.document) : withoutSecrets(std::move(payload.document));
}

bool addPayload(const KnownPayload& payload, Json::Value values, Json::Value& section) {
  section["record"] = Json::Value();
  if (payload.image) {
    Json::Value& image = section["image"];
    image["format"] = payload.image->format;
    image["width"] = payload.image->width;
    image["height"] = payload.image->height;
    return true;
  }
  if (values.isNull()) return false;
  section[payload.kind == PayloadKind::JSON ? "json" : "record"].swap(values);
  return true;
}

}  // namespace Inspect
