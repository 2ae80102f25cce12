#include <libinspect/report/Picture.h>

#include <png.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

#include <libcrossplatform/serialization/WireBytes.h>
#include <libinspect/container/ByteSource.h>
#include <libinspect/records/KnownPayload.h>

namespace Inspect {
namespace {

using Bytes = std::vector<uint8_t>;

std::string base64Of(const Bytes& bytes) {
  constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t left = bytes.size() - at;
    const uint32_t three = static_cast<uint32_t>(bytes[at]) << 16 |
                           (left > 1 ? static_cast<uint32_t>(bytes[at + 1]) << 8 : 0u) |
                           (left > 2 ? static_cast<uint32_t>(bytes[at + 2]) : 0u);
    text += DIGITS[three >> 18];
    text += DIGITS[three >> 12 & 63];
    text += left > 1 ? DIGITS[three >> 6 & 63] : '=';
    text += left > 2 ? DIGITS[three & 63] : '=';
  }
  return text;
}

/// The samples of a PGM, whose header was found whole.
class PgmSamples {
 public:
  explicit PgmSamples(const Bytes& bytes) : _text(reinterpret_cast<const char*>(bytes.data()), bytes.size()) {
    _isPlain = _text[1] == '2';
    _text.remove_prefix(2);
    for (int i = 0; i < 2; ++i) (void)number();
    _most = number();
    if (!_isPlain && !_text.empty()) _text.remove_prefix(1);  // one character of white space
  }

  /// The next sample as 0 to 255. @return false at the end
  bool next(uint8_t& sample) {
    const std::size_t width = _most > 255 ? 2 : 1;
    if (_text.empty() || (!_isPlain && _text.size() < width)) return false;
    uint32_t value = 0;
    if (_isPlain) {
      const std::size_t before = _text.size();
      value = number();
      if (_text.size() == before || !_wasNumber) return false;
    } else {
      for (std::size_t i = 0; i < width; ++i) value = value << 8 | static_cast<uint8_t>(_text[i]);
      _text.remove_prefix(width);
    }
    sample = static_cast<uint8_t>(std::min(value, _most) * 255 / _most);
    return true;
  }

 private:
  uint32_t number() {
    while (!_text.empty() && std::isdigit(static_cast<unsigned char>(_text.front())) == 0) {
      if (_text.front() == '#') _text.remove_prefix(std::min(_text.find_first_of("\r\n"), _text.size()));
      if (!_text.empty()) _text.remove_prefix(1);
    }
    constexpr uint32_t MOST = 1000000;
    uint32_t value = 0;
    _wasNumber = !_text.empty();
    while (!_text.empty() && std::isdigit(static_cast<unsigned char>(_text.front())) != 0) {
      value = std::min(MOST, value * 10 + static_cast<uint32_t>(_text.front() - '0'));
      _text.remove_prefix(1);
    }
    return value;
  }

  std::string_view _text;
  bool _isPlain = false;
  bool _wasNumber = false;
  uint32_t _most = 0;
};

bool pngOf(const Bytes& pgm, const ImageInfo& info, Bytes& png, std::string& error) {
  Bytes pixels(std::size_t{info.width} * info.height);
  PgmSamples samples(pgm);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    if (samples.next(pixels[i])) continue;
    error = fmt::format("expected {} pixels, found {}", pixels.size(), i);
    return false;
  }
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = info.width;
  image.height = info.height;
  image.format = PNG_FORMAT_GRAY;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  png.resize(size);
  if (png_image_write_to_memory(&image, png.data(), &size, 0, pixels.data(), 0, nullptr) == 0) {
    error = fmt::format("could not be made a PNG: {}", image.message);
    png_image_free(&image);
    return false;
  }
  png.resize(size);
  return true;
}

/// What libpng finds wrong with a PNG, of which it decodes every row; empty if nothing is.
std::string faultOfPng(const Bytes& bytes, const ImageInfo& info) {
  constexpr uint8_t END[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
  Bytes pixels(std::size_t{info.width} * info.height);
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  std::string fault;
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) != 0) {
    image.format = PNG_FORMAT_GRAY;  // the least memory: nobody looks at it
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) != 0) {
      const bool hasEnd = std::search(bytes.begin(), bytes.end(), std::begin(END), std::end(END)) != bytes.end();
      return hasEnd ? "" : "no end";
    }
  }
  fault = image.message;
  png_image_free(&image);
  return fault;
}

/// What is wrong with the structure of a JPEG as browsers know it: its segments to the end, with a frame before the
/// first scan. Its pixels are not decoded. Empty if nothing is.
std::string faultOfJpeg(const Bytes& bytes) {
  constexpr uint8_t FRAME = 0xC0, PROGRESSIVE = 0xC2, TABLES = 0xC4, ARITHMETIC = 0xCC, LAST_FRAME = 0xCF;
  constexpr uint8_t RESTART = 0xD0, LAST_RESTART = 0xD7, END = 0xD9, SCAN = 0xDA;
  constexpr std::size_t FRAME_BYTES = 8, COMPONENT_BYTES = 3;
  bool hasFrame = false, hasTables = false, hasScan = false;
  std::size_t at = 2;  // after the mark of its begin
  const auto skipScan = [&bytes, &at] {
    for (; at + 1 < bytes.size(); ++at) {
      const uint8_t next = bytes[at + 1];
      if (bytes[at] == 0xFF && next != 0 && next != 0xFF && (next < RESTART || next > LAST_RESTART)) return;
    }
  };
  while (bytes.size() - at >= 2) {
    const uint8_t marker = bytes[at + 1];
    if (bytes[at] != 0xFF || marker == 0) return fmt::format("no segment at byte {}", at);
    if (marker == 0xFF) {  // filler
      ++at;
      continue;
    }
    if (marker == END) return hasScan ? "" : "no pixels";
    const std::size_t left = bytes.size() - at - 2;
    const std::size_t length = left < 2 ? 0 : Marshal::loadBig<uint16_t>(&bytes[at + 2]);
    if (length < 2 || length > left) return fmt::format("a segment without its end at byte {}", at);
    const bool isFrame = marker >= FRAME && marker <= LAST_FRAME && marker != TABLES && marker != ARITHMETIC;
    if (isFrame) {
      const std::size_t components = length >= FRAME_BYTES ? bytes[at + 9] : 0;
      const bool isKnown = marker <= PROGRESSIVE && length == FRAME_BYTES + COMPONENT_BYTES * components;
      if (hasFrame || !isKnown || components == 0 || bytes[at + 4] != 8) {
        return fmt::format("a frame that browsers do not know at byte {}", at);
      }
    }
    hasFrame = hasFrame || isFrame;
    hasTables = hasTables || marker == TABLES;
    at += 2 + length;
    if (marker != SCAN) continue;
    if (!hasFrame || !hasTables) return "a scan without a frame or tables";
    const std::size_t begin = at;
    skipScan();
    hasScan = hasScan || at > begin;
  }
  return "no end";
}

std::optional<ImageInfo> whatIs(const Bytes& bytes, std::size_t most, std::string& error) {
  std::optional<ImageInfo> info = imageIn(bytes);
  if (!info) {
    error = "expected a PNG, JPEG or PGM picture, found another file";
  } else if (pixelsOf(*info) > Picture::MOST_PIXELS) {
    error = fmt::format("expected at most {} pixels, found {} x {}", Picture::MOST_PIXELS, info->width, info->height);
  } else if (std::string_view(info->format) != "PGM" && bytes.size() > most) {
    error = fmt::format("expected at most {} bytes, found {}", most, bytes.size());
  } else {
    return info;
  }
  return std::nullopt;
}

}  // namespace

bool makePicture(const Bytes& bytes, std::size_t most, const char* purpose, Picture& picture, std::string& error) {
  const std::optional<ImageInfo> info = whatIs(bytes, most, error);
  if (!info) return false;
  const std::string_view format = info->format;
  Bytes png;
  if (format == "PGM") {
    if (!pngOf(bytes, *info, png, error)) return false;
  } else if (const std::string fault = format == "PNG" ? faultOfPng(bytes, *info) : faultOfJpeg(bytes);
             !fault.empty()) {
    error = fmt::format("expected a whole {} picture{}, found {}", format, purpose, fault);
    return false;
  }
  picture.uri = std::string("data:image/") + (format == "JPEG" ? "jpeg" : "png") + ";base64," +
                base64Of(format == "PGM" ? png : bytes);
  picture.width = info->width;
  picture.height = info->height;
  return true;
}

bool readLogo(const std::string& path, Picture& picture, std::string& error) {
  constexpr char PURPOSE[] = " as the logo";
  std::string text;
  if (!readText(path, Picture::MOST_LOGO_BYTES, text, error)) return false;
  const Bytes bytes(text.begin(), text.end());
  const std::optional<ImageInfo> info = imageIn(bytes);
  if (info && std::string_view(info->format) != "PGM") {
    if (makePicture(bytes, Picture::MOST_LOGO_BYTES, PURPOSE, picture, error)) return true;
  } else {
    error = fmt::format("expected a PNG or JPEG picture{}, found {}", PURPOSE, info ? toString(*info) : "another file");
  }
  error = fmt::format("{}: {}", path, error);
  return false;
}

}  // namespace Inspect
