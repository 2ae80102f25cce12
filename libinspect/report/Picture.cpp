#include <libinspect/report/Picture.h>

#include <png.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

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

}  // namespace

bool makePicture(const Bytes& bytes, std::size_t most, Picture& picture, std::string& error) {
  const std::optional<ImageInfo> info = imageIn(bytes);
  if (!info) {
    error = "expected a PNG, JPEG or PGM picture, found another file";
    return false;
  }
  if (uint64_t{info->width} * info->height > Picture::MOST_PIXELS) {
    error = fmt::format("expected at most {} pixels, found {} x {}", Picture::MOST_PIXELS, info->width, info->height);
    return false;
  }
  const std::string_view format = info->format;
  Bytes png;
  if (format == "PGM") {
    if (!pngOf(bytes, *info, png, error)) return false;
  } else if (bytes.size() > most) {
    error = fmt::format("expected at most {} bytes, found {}", most, bytes.size());
    return false;
  }
  picture.uri = std::string("data:image/") + (format == "JPEG" ? "jpeg" : "png") + ";base64," +
                base64Of(format == "PGM" ? png : bytes);
  picture.width = info->width;
  picture.height = info->height;
  return true;
}

bool readLogo(const std::string& path, Picture& picture, std::string& error) {
  std::string text;
  if (!readText(path, Picture::MOST_LOGO_BYTES, text, error)) return false;
  const Bytes bytes(text.begin(), text.end());
  const std::optional<ImageInfo> info = imageIn(bytes);
  if (!info || std::string_view(info->format) == "PGM") {
    error = "expected a PNG or JPEG picture as the logo, found " + (info ? toString(*info) : "another file");
  } else if (makePicture(bytes, Picture::MOST_LOGO_BYTES, picture, error)) {
    return true;
  }
  error = fmt::format("{}: {}", path, error);
  return false;
}

}  // namespace Inspect
