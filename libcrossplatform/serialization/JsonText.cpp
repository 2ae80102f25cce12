#include <libcrossplatform/serialization/JsonText.h>

#include <ostream>

#include <json/writer.h>

// Documents in the field are compared as text: they hold what these writers write, and the newer builder writes
// blanks, arrays and empty values otherwise. So the deprecated writers stay, in this unit alone.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace Dump {

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

}  // namespace Dump
