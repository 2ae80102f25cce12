#include "Values.h"

#include <cmath>

#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/records/Measurements.h>

namespace Binding {

std::string pathOf(py::handle path) {
  const py::object bytes = py::reinterpret_steal<py::object>(PyOS_FSPath(path.ptr()));
  if (!bytes) throw py::error_already_set();
  std::string name = py::isinstance<py::bytes>(bytes)
                         ? bytes.cast<std::string>()
                         : py::module_::import("os").attr("fsencode")(bytes).cast<std::string>();
  if (name.find('\0') != std::string::npos) throw py::value_error("expected a path, found one with a zero byte in it");
  if (name.empty()) throw py::value_error("expected a path, found an empty one");
  return name == "-" ? "./-" : name;
}

std::vector<std::string> pathsOf(py::handle paths) {
  const bool isOne = py::isinstance<py::str>(paths) || py::isinstance<py::bytes>(paths) ||
                     py::hasattr(py::type::of(paths), "__fspath__");
  if (isOne) return {pathOf(paths)};
  std::vector<std::string> names;
  for (const py::handle path : py::iter(paths)) names.push_back(pathOf(path));
  return names;
}

py::str nameOf(const std::string& path) {
  PyObject* const name = PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<Py_ssize_t>(path.size()));
  if (name == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(name);
}

py::str textOf(const std::string& text) {
  return Dump::isUtf8(text) ? py::str(text) : py::str(Dump::withoutIllFormedUtf8(text));
}

std::string utf8Of(py::handle text) {
  Py_ssize_t size = 0;
  const char* const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (bytes == nullptr) throw py::error_already_set();
  return {bytes, static_cast<std::size_t>(size)};
}

namespace {

bool hasIllFormedName(const Json::Value& object) {
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (!Dump::isUtf8(member.name())) return true;
  }
  return false;
}

}  // namespace

py::object toPython(const Json::Value& value) {
  switch (value.type()) {
    case Json::nullValue:
      return py::none();
    case Json::booleanValue:
      return py::bool_(value.asBool());
    case Json::intValue:
      return py::int_(value.asInt64());
    case Json::uintValue:
      return py::int_(value.asUInt64());
    case Json::realValue:
      return std::isnan(value.asDouble()) ? py::object(py::none()) : py::object(py::float_(value.asDouble()));
    case Json::stringValue:
      return textOf(value.asString());
    case Json::arrayValue: {
      py::list list;
      for (const Json::Value& element : value) list.append(toPython(element));
      return std::move(list);
    }
    case Json::objectValue: {
      if (hasIllFormedName(value)) {
        Json::Value repaired = value;  // the library tells members apart whose names become the same
        Dump::replaceIllFormedTexts(repaired);
        return toPython(repaired);
      }
      py::dict object;
      for (auto member = value.begin(); member != value.end(); ++member) {
        object[py::str(member.name())] = toPython(*member);
      }
      return std::move(object);
    }
  }
  return py::none();
}

py::dict rowToPython(const Json::Value& row) {
  py::dict object;
  for (const auto& [name, member] : Inspect::flatMembers(row)) object[py::str(name)] = toPython(member.value);
  return object;
}

Json::Value toJson(py::handle value) {
  if (value.is_none()) return {};
  if (py::isinstance<py::bool_>(value)) return value.cast<bool>();
  if (PyIndex_Check(value.ptr()) != 0) {  // those of numpy, too
    const auto whole = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!whole) throw py::error_already_set();
    const long long number = PyLong_AsLongLong(whole.ptr());
    if (number == -1 && PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      throw py::value_error("expected a number of at most 64 bits, found " + py::str(value).cast<std::string>());
    }
    return static_cast<Json::Int64>(number);
  }
  if (py::isinstance<py::str>(value)) return utf8Of(value);
  if (!py::isinstance<py::list>(value) && !py::isinstance<py::tuple>(value)) {
    throw py::type_error("expected None, a bool, an int, a str or a list of them, found " +
                         py::str(py::type::of(value)).cast<std::string>());
  }
  Json::Value list(Json::arrayValue);
  for (const py::handle element : value) list.append(toJson(element));
  return list;
}

}  // namespace Binding
