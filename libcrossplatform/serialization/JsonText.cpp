#include <libcrossplatform/serialization/JsonText.h>

#include <ostream>
#include <streambuf>

#include <json/writer.h>

// Documents in the field are compared as text: they hold what these writers write, and the newer builder writes
// blanks, arrays and empty values otherwise. So the deprecated writers stay, in this unit alone.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace Dump {
namespace {

// Takes so many bytes and refuses the rest.
class BoundedText : public std::streambuf {
 public:
  BoundedText(std::string& text, std::size_t most) : _text(text), _most(most) {}

 protected:
  int_type overflow(int_type character) override {
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    const auto size = static_cast<std::size_t>(count);
    if (size > _most - _text.size()) return 0;
    _text.append(bytes, size);
    return count;
  }

 private:
  std::string& _text;
  const std::size_t _most;
};

}  // namespace

std::string styledJson(const Json::Value& value) {
  return Json::StyledWriter().write(value);
}

std::string compactJson(const Json::Value& value) {
  Json::FastWriter writer;
  writer.omitEndingLineFeed();
  return writer.write(value);
}

void writeStyledJson(std::ostream& out, const Json::Value& value, const char* indentation) {
  Json::StyledStreamWriter(indentation).write(out, value);
}

bool writeStyledJson(std::string& text, const Json::Value& value, const char* indentation, std::size_t most) {
  text.clear();
  BoundedText bounded(text, most);
  std::ostream out(&bounded);
  out.exceptions(std::ios::badbit);  // ends the writing at once; lost memory leaves as what it is
  try {
    writeStyledJson(out, value, indentation);
    return true;
  } catch (const std::ios::failure&) {
    return false;
  }
}

}  // namespace Dump
