#include <cerrno>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include <libinspect/container/Secrets.h>
#include <libinspect/job/ResultRows.h>
#include <libinspect/records/FileJudge.h>
#include <libinspect/records/KnownPayload.h>

#include "Module.h"
#include "Running.h"
#include "Values.h"

namespace Binding {
namespace {

/// A file that is open, for any number of threads at a time.
class OpenFile {
 public:
  explicit OpenFile(std::string path) : _path(std::move(path)) {
    auto source = std::make_unique<Inspect::ByteSource>();
    std::string error;
    {
      const Unlocked unlocked;
      if (!source->openFile(_path, error)) {
        throw Failure(Failure::SYSTEM, error, _path, reasonOf(error, _path));
      }
    }
    _source = std::move(source);
    _size = _source->size();
    read([this](const Inspect::ByteSource& bytes) {
      const Inspect::JudgedFile file = judge(bytes, Inspect::Examination::QUICK);
      if (file.state != Inspect::FileState::OTHER) return;
      const Inspect::Finding& why = *file.report.findings.begin();
      throw Failure::damaged(noContainerText(file), _path, why.code, why.offset);
    });
  }

  const std::string& path() const { return _path; }
  uint64_t size() const { return _size; }

  bool isClosed() {
    const Unlocked unlocked;
    const std::lock_guard<std::mutex> lock(_mutex);
    return _source == nullptr;
  }
  void close() {
    const Unlocked unlocked;
    const std::lock_guard<std::mutex> lock(_mutex);
    _source.reset();
  }

  /// What is known of the file, CRCs checked.
  const Inspect::JudgedFile& judged() {
    read([this](const Inspect::ByteSource& bytes) {
      if (!_judged) _judged = judge(bytes);
    });
    return *_judged;  // made once, and kept
  }
  const std::vector<Inspect::SectionInfo>& sections() {
    read([this](const Inspect::ByteSource& bytes) {
      if (!_sections) _sections = sectionsOf(bytes);
    });
    return *_sections;
  }

  /// Calls with the bytes of the file, one thread at a time, without the interpreter's lock.
  void read(const std::function<void(const Inspect::ByteSource&)>& work) {
    constexpr uint64_t LARGE = uint64_t{4} << 20;
    const auto locked = [&](const IsStopped* isStopped) {
      const std::lock_guard<std::mutex> lock(_mutex);
      if (_source == nullptr) throw std::invalid_argument(_path + ": expected an open file, found it closed");
      if (isStopped != nullptr) stopReading(*_source, *isStopped);
      const Unwatched unwatched{*_source};
      work(*_source);
      if (_source->hasFailed()) throw Failure(Failure::SYSTEM, _path + ": read error", _path, EIO);
    };
    if (_size > LARGE) return runLong([&locked](const IsStopped& isStopped) { locked(&isStopped); });
    const Unlocked unlocked;
    locked(nullptr);
  }

 private:
  struct Unwatched {
    Inspect::ByteSource& source;
    ~Unwatched() { source.onRead({}); }
  };

  const std::string _path;
  uint64_t _size = 0;
  std::mutex _mutex;  // guards what follows
  std::unique_ptr<Inspect::ByteSource> _source;
  std::optional<Inspect::JudgedFile> _judged;
  std::optional<std::vector<Inspect::SectionInfo>> _sections;
};

using SharedFile = std::shared_ptr<OpenFile>;

/// The bytes of a section: freed with the last view of them.
struct Payload {
  std::vector<uint8_t> bytes;
};

py::buffer_info bufferOf(const Payload& payload) {
  static const uint8_t nothing = 0;
  const uint8_t* const begin = payload.bytes.empty() ? &nothing : payload.bytes.data();
  return {const_cast<uint8_t*>(begin),
          sizeof *begin,
          py::format_descriptor<uint8_t>::format(),
          1,
          {payload.bytes.size()},
          {sizeof *begin},
          true};
}

struct Section {
  SharedFile file;
  Inspect::SectionInfo info;

  /// Why its bytes cannot be had.
  Failure failure(const std::string& text) const {
    using Inspect::DataVerdict;
    const Inspect::FindingCode code = info.verdict == DataVerdict::CUT     ? Inspect::E05_TRUNCATED
                                      : info.verdict == DataVerdict::WRONG ? Inspect::E04_DATA_CRC
                                                                           : inflateFinding(info).code;
    return Failure::damaged(file->path() + ": " + text, file->path(), code, info.payloadOffset());
  }

  std::vector<uint8_t> load() const {
    std::vector<uint8_t> bytes;
    file->read([&](const Inspect::ByteSource& source) {
      std::string error;
      if (!loadPayload(source, info, bytes, error) && !source.hasFailed()) throw failure(error);
    });
    return bytes;
  }

  py::object read() const {
    auto payload = std::make_unique<Payload>();
    payload->bytes = load();
    const py::object owner = py::cast(std::move(payload));
    PyObject* const view = PyMemoryView_FromObject(owner.ptr());
    if (view == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(view);
  }

  Inspect::KnownPayload known(const std::vector<uint8_t>& bytes) const {
    const Unlocked unlocked;
    return Inspect::knownPayload(info.header.type, bytes);
  }

  py::object record(bool reveal) const {
    const Inspect::KnownPayload payload = known(load());
    const Inspect::DecodedRecord& decoded = payload.record;
    if (decoded.outcome == Inspect::DecodedRecord::DAMAGED) {
      throw Failure::damaged(fmt::format("{}: section {}: the {} does not decode (code {})", file->path(), info.number,
                                         decoded.name, decoded.status),
                             file->path(), Inspect::E09_RECORD, info.payloadOffset());
    }
    return toPython(decoded.toJson(reveal));
  }

  py::object document(bool reveal) const {
    Inspect::KnownPayload payload = known(load());
    return payload.kind == Inspect::PayloadKind::JSON ? toPython(takeValues(payload, reveal)) : py::none();
  }

  py::dict show(bool reveal) const {
    std::vector<uint8_t> bytes = load();
    Inspect::KnownPayload payload = known(bytes);
    Inspect::SectionInfo unchecked = info;  // as the command has it, which checks the file header alone
    if (info.number > 0 || info.header.type != PFile::FILE_HEADER_TYPE)
      unchecked.verdict = Inspect::DataVerdict::NOT_CHECKED;
    Json::Value json = toJson(unchecked);
    Json::Value values = takeValues(payload, reveal);
    const bool isShown = addPayload(payload, std::move(values), json);
    py::dict shown = toPython(json);
    setFile(shown, file->path());
    if (isShown) return shown;
    if (!reveal) Inspect::maskSecrets(bytes, payload.record);
    shown["hex"] = py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size()).attr("hex")();
    return shown;
  }
};

struct Sections {
  SharedFile file;

  Section at(py::ssize_t index) const {
    const std::vector<Inspect::SectionInfo>& sections = file->sections();
    const auto size = static_cast<py::ssize_t>(sections.size());
    if (index < 0) index += size;
    if (index < 0 || index >= size) {
      throw py::index_error(fmt::format("{}: expected a section of {}, found {}", file->path(), size, index));
    }
    return {file, sections[static_cast<std::size_t>(index)]};
  }
};

py::dict infoOf(OpenFile& file) {
  py::dict info = rowToPython(Inspect::rowOf(file.judged()));
  setFile(info, file.path());
  return info;
}

py::object resultOf(OpenFile& file) {
  const Inspect::JudgedFile& judged = file.judged();
  if (!judged.hasSummary) return py::none();
  return newResult({{file.path(), judged.summary, judged.state != Inspect::FileState::INTACT}, true, damageOf(judged)});
}

py::list findingsOf(OpenFile& file) {
  py::list findings;
  for (const Inspect::Finding& finding : file.judged().report.findings) findings.append(toPython(toJson(finding)));
  return findings;
}

}  // namespace

void bindFiles(py::module_& module) {
  py::class_<Payload>(module, "Payload", py::buffer_protocol(), "The bytes of a section, which its views keep.")
      .def_buffer([](const Payload& payload) { return bufferOf(payload); });

  exported(
      py::class_<Section>(
          module, "Section",
          "A section of an open file. What its header says is there for the asking; its payload is read by each call."))
      .def_property_readonly(
          "number", [](const Section& s) { return s.info.number; }, "0 is the file header.")
      .def_property_readonly(
          "type", [](const Section& s) { return s.info.header.type; }, "What the payload is of.")
      .def_property_readonly(
          "name", [](const Section& s) { return Inspect::typeName(s.info.header.type); },
          "Of the type, or its number as text.")
      .def_property_readonly("version", [](const Section& s) { return s.info.header.version; })
      .def_property_readonly(
          "offset", [](const Section& s) { return s.info.offset; }, "Bytes before its header in the file.")
      .def_property_readonly(
          "stored_size", [](const Section& s) { return s.info.header.dataSize; }, "Bytes of the payload in the file.")
      .def_property_readonly(
          "size", [](const Section& s) { return s.info.originalSize.value_or(s.info.header.dataSize); },
          "Bytes of the payload, uncompressed; of a compressed one, as it claims.")
      .def_property_readonly("compressed",
                             [](const Section& s) { return (s.info.header.flags & PFile::SECTION_FLAG_COMPRESS) != 0; })
      .def_property_readonly(
          "crc", [](const Section& s) { return toString(s.info.verdict); }, "\"ok\", \"wrong\" or \"cut\".")
      .def(
          "as_dict", [](const Section& s) { return toPython(toJson(s.info)); },
          "as_dict() -> dict\n\nWhat `veltra list -f json` says of it.")
      .def("read", &Section::read,
           "read() -> memoryview\n\nThe bytes of the payload, uncompressed, as they are: secrets are not masked. The "
           "memory is freed with\nthe last view of it. Raises DamageError where the payload is cut, wrong, or no zlib "
           "stream of 8 MiB at most.")
      .def("record", &Section::record, py::kw_only(), py::arg("reveal") = false,
           "record(*, reveal=False) -> dict | None\n\nThe values of the record the payload begins with; None if it "
           "begins with none that is known. Secrets are\nmasked unless revealed. Raises DamageError, also where the "
           "record does not decode.")
      .def("json", &Section::document, py::kw_only(), py::arg("reveal") = false,
           "json(*, reveal=False) -> dict | list | None\n\nThe document that the payload is, of a type that holds "
           "JSON; else None. Secrets are masked unless revealed.")
      .def("show", &Section::show, py::kw_only(), py::arg("reveal") = false,
           "show(*, reveal=False) -> dict\n\nWhat `veltra show -f json` says of it: \"record\", \"json\", \"image\", "
           "or the bytes as \"hex\".")
      .def("__repr__", [](const Section& s) {
        return fmt::format("<veltra.Section {} {}, {} bytes, crc {}>", s.info.number,
                           Inspect::typeName(s.info.header.type), s.info.header.dataSize, toString(s.info.verdict));
      });

  exported(py::class_<Sections>(module, "Sections", "The sections of an open file, the file header first: a sequence."))
      .def("__len__", [](const Sections& s) { return s.file->sections().size(); })
      .def("__getitem__", &Sections::at)
      .def("__iter__",
           [](const py::object& self) { return py::reinterpret_steal<py::object>(PySeqIter_New(self.ptr())); })
      .def("__getitem__", [](const Sections& sections, const py::slice& slice) {
        std::size_t start = 0, stop = 0, step = 0, count = 0;
        if (!slice.compute(sections.file->sections().size(), &start, &stop, &step, &count)) {
          throw py::error_already_set();
        }
        py::list chosen;
        for (std::size_t i = 0; i < count; ++i, start += step) {
          chosen.append(py::cast(sections.at(static_cast<py::ssize_t>(start))));
        }
        return chosen;
      });

  exported(py::class_<OpenFile, SharedFile>(
               module, "File", "An open container, as open() gives it. Use it in a `with` statement, or close() it."))
      .def(py::init([](const py::object& path) { return std::make_shared<OpenFile>(pathOf(path)); }), py::arg("path"))
      .def_property_readonly(
          "name", [](const OpenFile& f) { return nameOf(f.path()); }, "The path that was opened.")
      .def_property_readonly("size", &OpenFile::size, "Bytes of the file.")
      .def_property_readonly("closed", &OpenFile::isClosed)
      .def_property_readonly(
          "sections", [](const SharedFile& f) { return Sections{f}; },
          "The sections up to the first header that does not verify, their CRCs checked: a "
          "sequence, the file header first.")
      .def_property_readonly(
          "kind", [](OpenFile& f) { return f.judged().kind; }, "\"result file\", \"limit database package\" and so on.")
      .def_property_readonly("damaged", [](OpenFile& f) { return f.judged().state == Inspect::FileState::DAMAGED; })
      .def_property_readonly("findings", &findingsOf,
                             "What is wrong with it, a dict each: \"code\", \"meaning\", \"offset\", \"section\", "
                             "\"wanted\", \"found\".")
      .def_property_readonly("result", &resultOf, "Its result; None if it has none that can be read.")
      .def("info", &infoOf, "info() -> dict\n\nWhat `veltra info -f json` says of it.")
      .def("close", &OpenFile::close, "close() -> None\n\nViews of payloads stay valid.")
      .def("__enter__", [](const SharedFile& f) { return f; })
      .def("__exit__", [](OpenFile& f, const py::args&) { f.close(); })
      .def("__repr__", [](const OpenFile& f) {
        return py::str("<veltra.File {!r}, {} bytes>").format(nameOf(f.path()), f.size());
      });
}

}  // namespace Binding
