#include <libcrossplatform/serialization/FieldReader.h>

namespace Marshal {

ReadWindow FieldReader::textSlowly(IObjectReader& stream, ReadWindow window, const char* name, std::string& v,
                                   bool& done) {
  if (window.cursor != nullptr) stream.advanceTo(window.cursor);
  stream.beginField(name);
  done = stream.readString(v);
  return stream.window();
}

bool FieldReader::run(const char* name, uint32_t size, std::string& out) {
  constexpr uint32_t PIECE = 64 * 1024;
  if (!ok()) return false;
  commit();
  _stream.beginField(name);
  out.clear();
  bool done = true;
  for (uint32_t at = 0; done && at < size;) {
    const uint32_t piece = std::min(size - at, PIECE);
    out.resize(at + piece);
    done = _stream.readBytes(reinterpret_cast<uint8_t*>(&out[at]), piece);
    at += piece;
  }
  _window = _stream.window();
  if (!done) fail(STREAM_SHORT);
  return done;
}

void FieldReader::terminatedText(const char* name, std::string& v) {
  uint32_t size = 0;
  std::string bytes;
  if (!length(name, size)) return;
  if (size == 0) return fail(STREAM_WRONG_ELEMENT);
  // NOLINTNEXTLINE(readability-redundant-string-cstr): the text ends at its first zero
  if (run(name, size, bytes)) v = bytes.c_str();
}

void FieldReader::countedText(const char* name, std::string& v) {
  uint32_t size = 0;
  std::string bytes;
  if (length(name, size) && run(name, size, bytes)) v = std::move(bytes);
}

}  // namespace Marshal
