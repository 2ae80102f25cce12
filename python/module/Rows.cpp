#include <pybind11/numpy.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libinspect/job/Job.h>
#include <libinspect/records/Measurements.h>

#include "Module.h"
#include "Run.h"
#include "Running.h"
#include "Values.h"

namespace Binding {
namespace {

using Inspect::FileRow;
using Rows = std::vector<FileRow>;

/// The texts of a column with few of them, and the code of each.
class Categories {
 public:
  explicit Categories(std::vector<std::string> texts) : _texts(std::move(texts)) {
    for (const std::string& text : _texts) _codes.emplace(text, static_cast<int8_t>(_codes.size()));
  }
  const std::vector<std::string>& texts() const { return _texts; }
  int8_t codeOf(const std::string& text) const {
    const auto found = _codes.find(text);
    return found == _codes.end() ? NONE : found->second;
  }
  static constexpr int8_t NONE = -1;

 private:
  std::vector<std::string> _texts;
  std::unordered_map<std::string, int8_t> _codes;
};

/// Of an enumeration, and the empty text of a value that is not in it.
template <class E>
std::vector<std::string> textsOf() {
  std::vector<std::string> texts;
  for (const Veltra::EnumText<E>& row : Veltra::enumTexts<E>()) texts.emplace_back(row.text);
  texts.emplace_back();
  return texts;
}

const Categories& typeCategories() {
  static const Categories CATEGORIES(textsOf<Veltra::ResultType>());
  return CATEGORIES;
}

/// The worse verdict after the other.
const Categories& statusCategories() {
  static const Categories CATEGORIES([] {
    std::vector<Veltra::Status> order;
    for (const auto& row : Veltra::enumTexts<Veltra::Status>()) order.push_back(row.value);
    std::sort(order.begin(), order.end(), [](Veltra::Status a, Veltra::Status b) {
      Veltra::Status merged = a;
      mergeStatus(merged, b);
      return a != b && merged == b;
    });
    std::vector<std::string> texts;
    for (const Veltra::Status status : order) texts.emplace_back(toString(status));
    texts.emplace_back();
    return texts;
  }());
  return CATEGORIES;
}

constexpr Veltra::DisplayType NUMBERS[] = {Veltra::DISPLAY_TYPE_VALUE, Veltra::DISPLAY_TYPE_GREATER_THAN,
                                           Veltra::DISPLAY_TYPE_LESS_THAN};

std::string relationBeside(const Veltra::DisplayMeas& measurement) {
  const Json::Value relation = Inspect::relationBeside(Inspect::measurementJson(measurement));
  return relation.isString() ? relation.asString() : "";
}

Veltra::DisplayMeas measurementOf(Veltra::DisplayType type, const char* text) {
  Veltra::DisplayMeas measurement;
  (void)measurement.fromString(text);
  measurement.type = type;
  return measurement;
}

/// All that can stand beside a number, or in place of it.
const Categories& relationCategories() {
  static const Categories CATEGORIES([] {
    std::vector<std::string> texts;
    for (const Veltra::DisplayType type : NUMBERS) texts.push_back(relationBeside(measurementOf(type, "0")));
    for (const auto type : {Veltra::DISPLAY_TYPE_NOT_AVAILABLE, Veltra::DISPLAY_TYPE_NOT_APPLICABLE}) {
      texts.push_back(relationBeside(measurementOf(type, "0")));
    }
    for (const Veltra::DisplayType type : NUMBERS) {
      for (const char* const text : {"-inf", "+inf", "NaN"}) texts.push_back(relationBeside(measurementOf(type, text)));
    }
    return texts;
  }());
  return CATEGORIES;
}

int8_t relationCode(const Veltra::DisplayMeas& measurement, bool isNumber) {
  static const std::array<int8_t, 3> CODES = [] {
    std::array<int8_t, 3> codes{};
    for (std::size_t i = 0; i < codes.size(); ++i) {
      codes.at(i) = relationCategories().codeOf(relationBeside(measurementOf(NUMBERS[i], "0")));
    }
    return codes;
  }();
  for (std::size_t i = 0; isNumber && i < CODES.size(); ++i) {
    if (measurement.type == NUMBERS[i]) return CODES.at(i);
  }
  return relationCategories().codeOf(relationBeside(measurement));
}

/// One column: values, with nothing where there is no result.
template <class Value, class ValueOf>
py::array columnOf(const Rows& rows, Value nothing, const ValueOf& valueOf) {
  py::array_t<Value> column(static_cast<py::ssize_t>(rows.size()));
  Value* at = column.mutable_data();
  for (const FileRow& row : rows) *at++ = row.hasResult ? static_cast<Value>(valueOf(row.row)) : nothing;
  return std::move(column);
}

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

template <Veltra::DisplayMeas Veltra::ResultSummary::*MEASUREMENT>
void addMeasurement(const Rows& rows, const std::string& name, py::dict& columns) {
  columns[py::str(name)] = columnOf<double>(rows, NOT_A_NUMBER, [](const Inspect::ResultRow& row) {
    return Inspect::measuredNumber(row.summary.*MEASUREMENT).value_or(NOT_A_NUMBER);
  });
  columns[py::str(name + "Relation")] = columnOf<int8_t>(rows, Categories::NONE, [](const Inspect::ResultRow& row) {
    const Veltra::DisplayMeas& measurement = row.summary.*MEASUREMENT;
    return relationCode(measurement, Inspect::measuredNumber(measurement).has_value());
  });
}

/// In nanoseconds; NOT_A_TIME where there is none, or none that 64 bits hold.
constexpr int64_t NOT_A_TIME = std::numeric_limits<int64_t>::min();
int64_t nanosecondsOf(const Inspect::ResultRow& row) {
  constexpr int64_t A_SECOND = 1'000'000'000;
  constexpr int64_t MOST = std::numeric_limits<int64_t>::max() / A_SECOND;
  const int64_t seconds = row.summary.timeStamp;
  return seconds == 0 || seconds > MOST || seconds < -MOST ? NOT_A_TIME : seconds * A_SECOND;
}

/// The columns of a frame by their names, in order: texts as lists, all else as arrays; categories as their codes.
py::dict columnsOf(const Rows& rows) {
  using Row = Inspect::ResultRow;
  py::dict columns;
  py::list files(rows.size()), ids(rows.size()), errors(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const FileRow& row = rows[i];
    files[i] = nameOf(row.row.file);
    ids[i] = row.hasResult ? py::object(textOf(row.row.summary.resultName)) : py::none();
    errors[i] = row.error.empty() ? py::object(py::none()) : textOf(row.error);
  }
  columns["file"] = files;
  columns["id"] = ids;
  columns["type"] = columnOf<int8_t>(
      rows, Categories::NONE, [](const Row& row) { return typeCategories().codeOf(toString(row.summary.resultType)); });
  columns["status"] = columnOf<int8_t>(
      rows, Categories::NONE, [](const Row& row) { return statusCategories().codeOf(toString(row.summary.status)); });
  addMeasurement<&Veltra::ResultSummary::length>(rows, "length", columns);
  addMeasurement<&Veltra::ResultSummary::headroom>(rows, "headroom", columns);
  columns["time"] = columnOf<int64_t>(rows, NOT_A_TIME, nanosecondsOf);
  columns["numPassTests"] = columnOf<int8_t>(rows, 0, [](const Row& row) { return row.summary.numPassTests; });
  columns["numPassStarTests"] = columnOf<int8_t>(rows, 0, [](const Row& row) { return row.summary.numPassStarTests; });
  columns["numFailTests"] = columnOf<int8_t>(rows, 0, [](const Row& row) { return row.summary.numFailTests; });
  py::array_t<bool> damaged(static_cast<py::ssize_t>(rows.size())), lost(static_cast<py::ssize_t>(rows.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    damaged.mutable_data()[i] = rows[i].row.isDamaged;
    lost.mutable_data()[i] = !rows[i].hasResult;
  }
  columns["damaged"] = damaged;
  columns["error"] = errors;
  columns["lost"] = lost;
  return columns;
}

// Rows go from process to process as bytes: their files and errors as texts, their summaries as in a file.

py::bytes bytesOf(Rows& rows) {
  Marshal::ByteStreamBuilder out;
  for (FileRow& row : rows) {
    out.writeString(row.row.file);
    out.writeString(row.error);
    out.writeBool(row.row.isDamaged);
    out.writeBool(row.hasResult);
    if (row.hasResult) row.row.summary.serialize(out);
  }
  if (out.failed()) throw py::value_error("expected rows of less than 4 GiB");
  return {reinterpret_cast<const char*>(out.data()), out.size()};
}

Rows rowsOf(const py::bytes& bytes) {
  const std::string text = bytes;
  Rows rows;
  if (text.empty()) return rows;
  Marshal::ByteStreamReader in(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
  while (in.position() < text.size()) {
    FileRow& row = rows.emplace_back();
    const bool isRead = in.readString(row.row.file) && in.readString(row.error) && in.readBool(row.row.isDamaged) &&
                        in.readBool(row.hasResult) &&
                        (!row.hasResult || row.row.summary.deserialize(in) == Marshal::STREAM_OK);
    if (!isRead) throw py::value_error("expected the bytes of rows, found others");
  }
  return rows;
}

/// What a member of a row is in Python; None where there is no result.
py::object valueOf(const FileRow& row, const char* name) {
  return row.hasResult ? toPython(Inspect::rowField(name)->json(row.row)) : py::none();
}

template <Veltra::DisplayMeas Veltra::ResultSummary::*MEASUREMENT>
py::object numberOf(const FileRow& row) {
  const auto number = Inspect::measuredNumber(row.row.summary.*MEASUREMENT);
  return row.hasResult && number ? py::object(py::float_(*number)) : py::none();
}

template <Veltra::DisplayMeas Veltra::ResultSummary::*MEASUREMENT>
py::object relationOf(const FileRow& row) {
  return row.hasResult ? py::object(textOf(relationBeside(row.row.summary.*MEASUREMENT))) : py::none();
}

py::object timeOf(const FileRow& row) {
  if (!row.hasResult || row.row.summary.timeStamp == 0) return py::none();
  const py::module_ datetime = py::module_::import("datetime");
  try {
    const py::object utc = datetime.attr("timezone").attr("utc");
    return datetime.attr("datetime")(1970, 1, 1, py::arg("tzinfo") = utc) +
           datetime.attr("timedelta")(py::arg("seconds") = py::int_(row.row.summary.timeStamp));
  } catch (const py::error_already_set& error) {
    if (!error.matches(PyExc_OverflowError)) throw;
    return py::none();  // after the year 9999
  }
}

py::dict rowDict(const FileRow& row) {
  py::dict members;
  if (row.hasResult) {
    members = rowToPython(toJson(row.row));
  } else {
    for (const std::string& column : Inspect::rowColumns()) members[py::str(column)] = py::none();
  }
  setFile(members, row.row.file);
  return members;
}

/// Reads the results of a run, a batch at a time: those of the next files, or all of them in their order.
class Reading {
 public:
  Reading(std::shared_ptr<const Run> run, bool unsorted, unsigned threads)
      : _run(std::move(run)), _unsorted(unsorted), _threads(threads) {}

  py::object next() {
    constexpr std::size_t FIRST = 64, MOST = 4096;
    if (_isReading) throw py::value_error("expected one thread at a time, found another that is reading");
    const Busy busy{_isReading = true};
    while (_at == _rows.size()) {
      if (_hasBegun && _file == _run->files.size()) throw py::stop_iteration();
      if (!_fileRun) _fileRun = _run->fileRun();
      Rows rows = _hasBegun ? Rows() : _run->faultRows();
      const std::size_t most = _unsorted ? std::max(_batch, FIRST) : _run->files.size();
      const std::size_t end = _file + std::min(most, _run->files.size() - _file);
      _run->read(*_fileRun, _file, end, _threads, rows);
      if (!_unsorted) sortRows(rows);
      // Only now: after Ctrl-C the same files are read once more.
      _rows = std::move(rows);
      _at = 0;
      _file = end;
      _batch = std::min(4 * most, MOST);
      _hasBegun = true;
    }
    return newResult(std::move(_rows[_at++]));
  }

 private:
  struct Busy {
    bool& isReading;
    ~Busy() { isReading = false; }
  };

  std::shared_ptr<const Run> _run;
  std::unique_ptr<Inspect::FileRun> _fileRun;
  bool _isReading = false;  // changed with the interpreter's lock alone
  bool _unsorted;
  unsigned _threads;
  bool _hasBegun = false;
  std::size_t _batch = 0;
  std::size_t _file = 0;
  std::size_t _at = 0;
  Rows _rows;
};

}  // namespace

Run::Run(std::vector<std::string> paths, bool recursive) : named(std::move(paths)) {
  runLong([&](const IsStopped&) { files = Inspect::filesWithoutDescriptions(named, recursive, faults, passedOver); });
}

std::unique_ptr<Inspect::FileRun> Run::fileRun() const {
  auto run = std::make_unique<Inspect::FileRun>(files, named, 0, passedOver);
  if (extensions) run->useResultExtensions(*extensions);
  return run;
}

std::vector<Run> Run::parts(std::size_t count) const {
  const std::unordered_set<std::string> all(named.begin(), named.end());
  std::vector<Run> parts(count);
  parts.at(0).faults = faults;
  for (std::size_t i = 0; i < count; ++i) {
    const auto at = [&](std::size_t bound) {
      return files.begin() +
             static_cast<std::ptrdiff_t>(files.size() / count * bound + std::min(files.size() % count, bound));
    };
    Run& part = parts[i];
    part.extensions = extensions;
    part.files.assign(at(i), at(i + 1));
    std::copy_if(part.files.begin(), part.files.end(), std::back_inserter(part.named),
                 [&all](const std::string& file) { return all.count(file) > 0; });
  }
  return parts;
}

Rows Run::faultRows() const {
  Rows rows;
  for (const std::string& fault : faults) {
    FileRow& row = rows.emplace_back();
    row.row.file = fault.substr(0, fault.rfind(": "));
    row.row.isDamaged = true;
    row.error = fault;
  }
  return rows;
}

void Run::read(Inspect::FileRun& run, std::size_t begin, std::size_t end, unsigned threads, Rows& rows) const {
  runLong([&](const IsStopped& isStopped) {
    const StoppableRun stoppable(run, isStopped);
    const std::vector<std::string> part(files.begin() + static_cast<std::ptrdiff_t>(begin),
                                        files.begin() + static_cast<std::ptrdiff_t>(end));
    readRows(part, run, readingUntil(isStopped, threads), [&](FileRow row) {
      if (isStopped) throw Stopped();
      rows.push_back(std::move(row));
    });
  });
}

py::object newResult(FileRow row) {
  return py::cast(std::move(row));
}

void bindRows(py::module_& module) {
  exported(py::class_<FileRow>(module, "Result",
                               "The result of a file, as results() gives it. Of a file that is damaged or could not be "
                               "read, `damaged` is true\n"
                               "and `error` says why; where no result could be read, all else but `file` is None."))
      .def_property_readonly(
          "file", [](const FileRow& r) { return nameOf(r.row.file); }, "Its path.")
      .def_property_readonly(
          "id", [](const FileRow& r) { return valueOf(r, "id"); }, "Of the link, as people see it.")
      .def_property_readonly(
          "type", [](const FileRow& r) { return valueOf(r, "type"); }, "\"COPPER\", \"FIBER\" or \"NOT_SET\".")
      .def_property_readonly(
          "verdict", [](const FileRow& r) { return valueOf(r, "status"); },
          "\"Pass\", \"Pass star\", \"Fail\" and so on; empty for a value without a name.")
      .def_property_readonly("length", &numberOf<&Veltra::ResultSummary::length>, "In m; None without a finite number.")
      .def_property_readonly("length_relation", &relationOf<&Veltra::ResultSummary::length>,
                             "\"=\" measured, \">\" or \"<\" a bound, \"n/a\", \"none\"; else the value that is no "
                             "number, such as \"-inf\".")
      .def_property_readonly("headroom", &numberOf<&Veltra::ResultSummary::headroom>,
                             "In dB; None without a finite number.")
      .def_property_readonly("headroom_relation", &relationOf<&Veltra::ResultSummary::headroom>, "As length_relation.")
      .def_property_readonly("time", &timeOf,
                             "When it was taken, a datetime in UTC; None if the result says none, or none before the "
                             "year 10000.")
      .def_property_readonly("num_pass_tests", [](const FileRow& r) { return valueOf(r, "numPassTests"); })
      .def_property_readonly("num_pass_star_tests", [](const FileRow& r) { return valueOf(r, "numPassStarTests"); })
      .def_property_readonly("num_fail_tests", [](const FileRow& r) { return valueOf(r, "numFailTests"); })
      .def_property_readonly(
          "damaged", [](const FileRow& r) { return r.row.isDamaged; },
          "The file is damaged, or could not be read to its end.")
      .def_property_readonly(
          "error", [](const FileRow& r) { return r.error.empty() ? py::object(py::none()) : textOf(r.error); },
          "What is wrong with the file; None if it is intact.")
      .def("as_dict", &rowDict, "as_dict() -> dict\n\nThe row of `veltra summary -f json`.")
      .def("__eq__",
           [](const FileRow& a, const py::object& b) -> py::object {
             if (!py::isinstance<FileRow>(b)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
             const auto& other = b.cast<const FileRow&>();
             return py::bool_(a.error == other.error && a.row.isDamaged == other.row.isDamaged &&
                              rowDict(a).equal(rowDict(other)));
           })
      .def("__repr__",
           [](const FileRow& r) {
             return r.hasResult ? py::str("<veltra.Result {!r}: {!r} {}>")
                                      .format(nameOf(r.row.file), valueOf(r, "id"), valueOf(r, "status"))
                                : py::str("<veltra.Result {!r}: {}>").format(nameOf(r.row.file), textOf(r.error));
           })
      .def(py::pickle(
          [](const FileRow& row) {
            Rows rows = {row};
            return py::make_tuple(bytesOf(rows));
          },
          [](const py::tuple& state) { return rowsOf(state[0].cast<py::bytes>()).at(0); }))
      .attr("__hash__") = py::none();

  py::class_<Rows>(module, "Rows", "Many results.")
      .def(py::init<>())
      .def("__len__", [](const Rows& rows) { return rows.size(); })
      .def("extend", [](Rows& rows, const Rows& more) { rows.insert(rows.end(), more.begin(), more.end()); })
      .def("sort",
           [](Rows& rows) {
             const Unlocked unlocked;
             sortRows(rows);
           })
      .def("columns", &columnsOf)
      .def(py::pickle([](Rows& rows) { return py::make_tuple(bytesOf(rows)); },
                      [](const py::tuple& state) { return rowsOf(state[0].cast<py::bytes>()); }));

  py::class_<Reading>(module, "Reading", "Results, read as they are asked for.")
      .def("__iter__", [](const py::object& self) { return self; })
      .def("__next__", &Reading::next);

  py::class_<Run, std::shared_ptr<Run>>(module, "Run", "The files that a call is about.")
      .def(py::init([](const py::object& paths, bool recursive) { return Run(pathsOf(paths), recursive); }),
           py::arg("paths"), py::arg("recursive"))
      .def("__len__", [](const Run& run) { return run.files.size(); })
      .def("files",
           [](const Run& run) {
             py::list names;
             for (const std::string& file : run.files) names.append(nameOf(file));
             return names;
           })
      .def(
          "parts",
          [](const Run& run, std::size_t count) {
            if (count < 1) throw py::value_error("expected 1 part or more");
            py::list parts;
            for (Run& part : run.parts(count)) parts.append(py::cast(std::make_shared<Run>(std::move(part))));
            return parts;
          },
          py::arg("count"))
      .def("extensions",
           [](const Run& run) {
             std::vector<std::string> found;
             runLong([&](const IsStopped& isStopped) {
               const std::unique_ptr<Inspect::FileRun> files = run.fileRun();
               const StoppableRun stoppable(*files, isStopped);
               found = files->resultExtensions();
             });
             py::list names;
             for (const std::string& extension : found) names.append(py::bytes(extension));
             return names;
           })
      .def("with_extensions",
           [](const Run& run, const std::vector<std::string>& extensions) {
             Run known = run;
             known.extensions = extensions;
             return known;
           })
      .def(
          "read",
          [](const Run& run, bool unsorted, unsigned threads) {
            Rows rows = run.faultRows();
            run.read(*run.fileRun(), 0, run.files.size(), threads, rows);
            if (!unsorted) {
              const Unlocked unlocked;
              sortRows(rows);
            }
            return rows;
          },
          py::arg("unsorted"), py::arg("threads"))
      .def(
          "results",
          [](const std::shared_ptr<Run>& run, bool unsorted, unsigned threads) {
            return std::make_unique<Reading>(run, unsorted, threads);
          },
          py::arg("unsorted"), py::arg("threads"))
      .def(py::pickle(
          [](const Run& run) {
            const auto bytes = [](const std::vector<std::string>& texts) {
              py::list list;
              for (const std::string& text : texts) list.append(py::bytes(text));
              return list;
            };
            return py::make_tuple(bytes(run.files), bytes(run.named), bytes(run.faults),
                                  run.extensions ? py::object(bytes(*run.extensions)) : py::none());
          },
          [](const py::tuple& state) {
            using Texts = std::vector<std::string>;
            Run run;
            run.files = state[0].cast<Texts>();
            run.named = state[1].cast<Texts>();
            run.faults = state[2].cast<Texts>();
            if (!state[3].is_none()) run.extensions = state[3].cast<Texts>();
            return run;
          }));

  module.attr("TYPES") = py::cast(typeCategories().texts());
  module.attr("VERDICTS") = py::cast(statusCategories().texts());
  module.attr("RELATIONS") = py::cast(relationCategories().texts());
}

}  // namespace Binding
