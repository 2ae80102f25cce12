#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

#include <fmt/format.h>

#include <libinspect/container/Recover.h>
#include <libinspect/job/JobStatus.h>
#include <libinspect/records/FileJudge.h>

#include "Module.h"
#include "Run.h"
#include "Running.h"
#include "Values.h"

namespace Binding {
namespace {

/// What is wrong with one file.
struct Diagnosis {
  std::string file;
  Json::Value json;   ///< null: the file could not be looked at
  std::string error;  ///< why
};

Diagnosis diagnosisOf(const std::string& name, const Inspect::ReadOutcome& outcome, const Inspect::JudgedFile* file,
                      const Inspect::FileRun& run, bool isDeep) {
  using Inspect::OutputPlace;
  if (outcome.state != Inspect::ReadOutcome::WAS_READ || file == nullptr) return {name, {}, outcome.error};
  if (file->state == Inspect::FileState::OTHER) return {name, {}, noContainerText(*file)};
  const OutputPlace place = run.sharesName(name) ? OutputPlace::BESIDE_INPUT : OutputPlace::CURRENT_FOLDER;
  Json::Value json = diagnosisJson(*file, isDeep);
  Json::Value& findings = json["findings"] = Json::Value(Json::arrayValue);
  for (const Inspect::Finding& finding : file->report.findings) findings.append(toJson(*file, finding, place));
  return {name, std::move(json), {}};
}

py::list doctor(const Run& run, const std::string& depth) {
  using Inspect::Examination;
  if (depth != "quick" && depth != "ordinary" && depth != "deep") {
    throw py::value_error("depth: expected \"quick\", \"ordinary\" or \"deep\", found \"" + depth + "\"");
  }
  const bool isDeep = depth == "deep";
  const Examination examination = isDeep             ? Examination::DEEP
                                  : depth == "quick" ? Examination::QUICK
                                                     : Examination::ORDINARY;
  py::list answer;
  std::vector<Diagnosis> found;
  for (const Inspect::FileRow& fault : run.faultRows()) found.push_back({fault.row.file, {}, fault.error});
  runLong([&](const IsStopped& isStopped) {
    const std::unique_ptr<Inspect::FileRun> files = run.fileRun();
    const auto ask = [&](const Inspect::ByteSource& source) {
      return judge(source, examination, [&](const std::string& path) { return files->isNamedAsResult(path); });
    };
    const auto tell = [&](const std::string& name, const Inspect::ReadOutcome& outcome,
                          const std::optional<Inspect::JudgedFile>& file) {
      if (isStopped) throw Stopped();
      if (file && file->state == Inspect::FileState::OTHER && !files->isNamed(name)) return;
      found.push_back(diagnosisOf(name, outcome, file ? &*file : nullptr, *files, isDeep));
    };
    Inspect::askEach<Inspect::JudgedFile>(files->files(), readingUntil(isStopped, 0), ask, tell);
  });
  for (const Diagnosis& diagnosis : found) {
    py::dict element;
    if (!diagnosis.json.isNull()) element = toPython(diagnosis.json);
    setFile(element, diagnosis.file);
    if (diagnosis.json.isNull()) element["error"] = textOf(diagnosis.error);
    answer.append(element);
  }
  return answer;
}

/// Why an output may not be written.
[[noreturn]] void refuse(const std::string& refusal, const std::string& path) {
  if (refusal == Inspect::EXISTS) {
    throw Failure(Failure::SYSTEM, path + ": exists; use force=True to replace it", path, EEXIST);
  }
  throw py::value_error(refusal);
}

py::dict recover(const py::object& input, const py::object& output, bool force) {
  const std::string from = pathOf(input), to = pathOf(output);
  Inspect::Recovery recovery;
  runLong([&](const IsStopped& isStopped) {
    std::string error;
    Inspect::ByteSource source;
    stopReading(source, isStopped);
    errno = 0;
    if (!source.openFile(from, error)) throw Failure(Failure::SYSTEM, error, from, errno != 0 ? errno : EISDIR);
    const std::string refusal = Inspect::refusalToReplace(to, force, {from});
    if (!refusal.empty()) refuse(refusal, to);
    recovery = findSections(source);
    const bool isNothing = hasNothingToRecover(source, recovery);
    if (source.hasFailed()) throw Failure(Failure::SYSTEM, from + ": read error", from, EIO);
    if (isNothing) {
      const Inspect::JudgedFile file = judge(source);
      const std::string text =
          file.state == Inspect::FileState::OTHER ? noContainerText(file) : from + ": no intact section found";
      throw Failure::damaged(text, from, Inspect::E02_NO_FILE_HEADER, 0);
    }
    errno = 0;
    if (!writeRecovered(source, recovery, to, error)) Failure::raise(error, to);
  });
  Json::Value json = toJson(recovery);
  const auto add = [&json](const char* name, const auto& list) {
    Json::Value& elements = json[name] = Json::Value(Json::arrayValue);
    for (const auto& element : list) elements.append(toJson(element));
  };
  add("kept", recovery.kept);
  add("lost", recovery.lost);
  add("lostSections", recovery.lostSections);
  py::dict answer = toPython(json);
  setFile(answer, from);
  answer["output"] = nameOf(to);
  return answer;
}

/// A job that was read.
class WholeJob {
 public:
  WholeJob(const py::object& paths, const py::object& description, const std::vector<std::string>& expected,
           const std::string& count) {
    const std::vector<std::string> named = pathsOf(paths);
    if (count != "latest" && count != "all") {
      throw py::value_error("count: expected \"latest\" or \"all\", found \"" + count + "\"");
    }
    if (!description.is_none()) _job.descriptionFile = pathOf(description);
    runLong([&](const IsStopped& isStopped) {
      describe(named, expected);
      read(named, isStopped);
      _job.settle(count == "all" ? Inspect::CountPolicy::ALL : Inspect::CountPolicy::LATEST);
    });
  }

  const Inspect::Job& job() const { return _job; }
  const std::vector<std::string>& faults() const { return _faults; }

  py::dict status() const {
    Json::Value json = toJson(_job, statusOf(_job));
    Json::Value& links = json["links"] = Json::Value(Json::arrayValue);
    for (const Inspect::JobLink& link : _job.links) links.append(toJson(link));
    return toPython(json);
  }

 private:
  void describe(const std::vector<std::string>& named, const std::vector<std::string>& expected) {
    std::string error;
    if (_job.descriptionFile.empty()) {
      const std::vector<std::string> found = Inspect::descriptionsIn(named);
      if (found.size() > 1) {
        throw py::value_error(
            fmt::format("expected one job, found {}; say which with description=", fmt::join(found, " and ")));
      }
      if (!found.empty()) _job.descriptionFile = found.front();
    }
    errno = 0;
    if (!_job.descriptionFile.empty() &&
        !readJobDescription(_job.descriptionFile, _job.description, _job.expected, error)) {
      Failure::raise(error, _job.descriptionFile);
    }
    for (const std::string& range : expected) {
      if (!_job.expected.add(range, error)) throw py::value_error(error);
    }
    if (_job.expected.empty()) {
      throw py::value_error(
          fmt::format("{}: no expected IDs; name them with expected=, or in a job.json", fmt::join(named, ", ")));
    }
  }

  void read(const std::vector<std::string>& named, const IsStopped& isStopped) {
    std::size_t others = 0;
    std::vector<std::string> files = filesOf(_job, named, _faults, others);
    const Inspect::FileRun run(std::move(files), named, 0, others);
    const auto tell = [&](const std::string&, const Inspect::ReadOutcome& outcome, const Inspect::JudgedFile*) {
      if (isStopped) throw Stopped();
      if (outcome.state != Inspect::ReadOutcome::WAS_READ) _faults.push_back(outcome.error);
    };
    _job.files = readJob(run, readingUntil(isStopped, 0), tell);
  }

  Inspect::Job _job;
  std::vector<std::string> _faults;
};

}  // namespace

void bindJobs(py::module_& module) {
  module.def("doctor", &doctor, py::arg("run"), py::arg("depth"));
  module.def("recover", &recover, py::arg("path"), py::arg("output"), py::arg("force"));
  exported(py::class_<WholeJob>(module, "Job", "A job that was read, as job() gives it."))
      .def(py::init<const py::object&, const py::object&, const std::vector<std::string>&, const std::string&>(),
           py::arg("paths"), py::arg("description"), py::arg("expected"), py::arg("count"))
      .def_property_readonly(
          "description",
          [](const WholeJob& job) {
            const std::string& file = job.job().descriptionFile;
            return file.empty() ? py::object(py::none()) : nameOf(file);
          },
          "The description of the job that was read; None if there is none.")
      .def_property_readonly(
          "faults",
          [](const WholeJob& job) {
            py::list faults;
            for (const std::string& fault : job.faults()) faults.append(textOf(fault));
            return faults;
          },
          "What could not be read, a line each: the status may then lack results.")
      .def("status", &WholeJob::status,
           "status() -> dict\n\nWhat `veltra job status -f json` says: \"finished\", the counts of \"all\" IDs and of "
           "each of \"ranges\", the \"work\"\nthat is left, all \"links\" with their results, and \"notes\".");
}

}  // namespace Binding
