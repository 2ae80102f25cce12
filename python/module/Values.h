#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include <json/value.h>

namespace Binding {

namespace py = pybind11;

/// The bytes of a path: text, bytes or os.PathLike. A file named "-" is one, and not standard input.
/// @throw py::value_error for a zero byte, py::error_already_set for anything that is no path
std::string pathOf(py::handle path);
/// Those of one path, or of each of an iterable of them.
std::vector<std::string> pathsOf(py::handle paths);

/// The name of a file as Python has it: it leads to the same file when it is given back, whatever its bytes.
py::str nameOf(const std::string& path);
/// Text from a file; what is no UTF-8 in it becomes U+FFFD, as in all JSON.
py::str textOf(const std::string& text);

/// @throw py::error_already_set for a text with lone surrogates, which has no UTF-8
std::string utf8Of(py::handle text);

/// Equal to what json.loads() makes of the JSON text of a value; of NaN, which has none, None.
py::object toPython(const Json::Value& value);
/// The same of a row: a measurement is two of its members.
py::dict rowToPython(const Json::Value& row);
/// Of None, a bool, an int, a text, and lists of these.
/// @throw py::type_error for anything else, py::value_error for a number that takes more than 64 bits
Json::Value toJson(py::handle value);

/// Of what a member of an answer says of its file.
inline void setFile(py::dict& answer, const std::string& path) {
  answer["file"] = nameOf(path);
}

}  // namespace Binding
