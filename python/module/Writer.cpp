#include <cerrno>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>

#include <libinspect/container/ByteSource.h>
#include <libinspect/describe/ResultDescription.h>

#include "Module.h"
#include "Running.h"
#include "Values.h"

namespace Binding {
namespace {

/// The bytes that an object lends, which it keeps as they are meanwhile.
class Lent {
 public:
  explicit Lent(const py::buffer& from) {
    if (PyObject_GetBuffer(from.ptr(), &_view, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  }
  ~Lent() { PyBuffer_Release(&_view); }
  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;
  const uint8_t* data() const { return static_cast<const uint8_t*>(_view.buf); }
  std::size_t size() const { return static_cast<std::size_t>(_view.len); }

 private:
  Py_buffer _view{};
};

/// A result file that is being written.
class Writer {
 public:
  Writer(const py::object& path, bool force) : _path(pathOf(path)) {
    const Unlocked unlocked;
    const std::string refusal = Inspect::refusalToReplace(_path, force, {});
    if (refusal == Inspect::EXISTS) {
      throw Failure(Failure::SYSTEM, _path + ": exists; use force=True to replace it", _path, EEXIST);
    }
    if (!refusal.empty()) throw py::value_error(refusal);
    std::string error;
    _file = std::make_unique<Inspect::ResultWriter>();
    errno = 0;
    if (!_file->open(_path, error)) Failure::raise(error, _path);
  }

  /// @param members  of a summary, by their names in a description
  void writeSummary(const py::dict& members) {
    Json::Value json(Json::objectValue);
    for (const auto& [name, value] : members) json[name.cast<std::string>()] = toJson(value);
    Veltra::ResultSummary summary;
    std::string error;
    if (!Inspect::parseSummary(json, "", summary, error)) throw py::value_error(error);
    write(false, [&](Inspect::ResultWriter& file) {
      errno = 0;
      if (!file.writeSummary(summary, error)) Failure::raise(error, _path);
      _hasSummary = true;
    });
  }

  void add(const py::object& type, const py::buffer& data, const py::object& version, const py::object& compress) {
    Inspect::DescribedSection section;
    section.type = typeOf(type);
    section.version = static_cast<uint16_t>(numberOf("version", version, 0, 0xFFFF));
    section.compress = !compress.is_none();
    const int level = section.compress ? numberOf("compress", compress, 0, 9) : 0;
    const Lent bytes(data);
    std::string error;
    if (!Inspect::ResultWriter::isPayload(_path, bytes.size(), section.compress, error)) throw py::value_error(error);
    write(true, [&](Inspect::ResultWriter& file) {
      errno = 0;
      if (!file.write(section, level, bytes.data(), static_cast<uint32_t>(bytes.size()), error)) {
        Failure::raise(error, _path);
      }
    });
  }

  void commit() {
    write(true, [this](Inspect::ResultWriter& file) {
      std::string error;
      errno = 0;
      if (!file.commit(error)) Failure::raise(error, _path);
      _file.reset();
    });
  }

  void discard() {
    const Unlocked unlocked;
    const std::lock_guard<std::mutex> lock(_mutex);
    _file.reset();
  }

  bool isClosed() {
    const Unlocked unlocked;
    const std::lock_guard<std::mutex> lock(_mutex);
    return _file == nullptr;
  }

  const std::string& path() const { return _path; }

 private:
  static int numberOf(const char* name, const py::object& number, int least, int most) {
    if (PyIndex_Check(number.ptr()) == 0 || py::isinstance<py::bool_>(number)) {
      throw py::type_error(std::string(name) + ": expected an int, found " + py::repr(number).cast<std::string>());
    }
    const Json::Value value = toJson(number);
    if (value.asInt64() < least || value.asInt64() > most) {
      throw py::value_error(std::string(name) + ": expected a number from " + std::to_string(least) + " to " +
                            std::to_string(most) + ", found " + py::repr(number).cast<std::string>());
    }
    return value.asInt();
  }

  static uint16_t typeOf(const py::object& type) {
    if (!py::isinstance<py::str>(type)) return static_cast<uint16_t>(numberOf("type", type, 2, 0xFFFF));
    const std::string name = utf8Of(type);
    if (const PFile::SectionType* const known = PFile::findSectionType(std::string_view(name))) return known->id;
    throw py::value_error("type: expected the name or number of a section type, found \"" + name + "\"");
  }

  /// Calls with the file. One that a call has failed on is given up: it may end in half of a section.
  /// @param hasSummary  there must be one, or none yet
  void write(bool hasSummary, const std::function<void(Inspect::ResultWriter&)>& work) {
    const Unlocked unlocked;
    const std::lock_guard<std::mutex> lock(_mutex);
    if (_file == nullptr)
      throw std::invalid_argument(_path + ": expected a file that is being written, found it closed");
    if (hasSummary != _hasSummary) {
      throw std::invalid_argument(_path + (hasSummary ? ": expected summary() first, found no summary"
                                                      : ": expected one summary, found a second"));
    }
    try {
      work(*_file);
    } catch (const std::exception&) {
      _file.reset();
      throw;
    }
  }

  const std::string _path;
  std::mutex _mutex;  // guards what follows
  std::unique_ptr<Inspect::ResultWriter> _file;
  bool _hasSummary = false;
};

}  // namespace

void bindWriter(py::module_& module) {
  py::class_<Writer>(module, "Writer", "A result file that is being written.")
      .def(py::init<const py::object&, bool>(), py::arg("path"), py::arg("force"))
      .def_property_readonly("name", [](const Writer& writer) { return nameOf(writer.path()); })
      .def_property_readonly("closed", &Writer::isClosed)
      .def("summary", &Writer::writeSummary, py::arg("members"))
      .def("add", &Writer::add, py::arg("type"), py::arg("data"), py::arg("version"), py::arg("compress"))
      .def("commit", &Writer::commit)
      .def("discard", &Writer::discard);
}

}  // namespace Binding
