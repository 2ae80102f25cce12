#include "Running.h"

#include <cxxabi.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <future>
#include <system_error>
#include <thread>

#include "Values.h"

namespace Binding {

Failure Failure::damaged(const std::string& text, const std::string& file, Inspect::FindingCode code, uint64_t offset) {
  Failure failure(DAMAGED, text, file, 0);
  failure._code = toString(code);
  failure._offset = offset;
  return failure;
}

namespace {

/// `errno`, if it is what a text ends with; otherwise 0.
int reasonAtEnd(const std::string& text) {
  const int reason = errno;
  const std::string words = std::string(": ") + std::strerror(reason);
  const bool isAtEnd =
      text.size() >= words.size() && text.compare(text.size() - words.size(), words.size(), words) == 0;
  return isAtEnd ? reason : 0;
}

}  // namespace

int reasonOf(const std::string& error, const std::string& path) {
  std::error_code unknown;
  if (const int reason = reasonAtEnd(error); reason != 0) return reason;
  return std::filesystem::is_directory(path, unknown) ? EISDIR : EINVAL;
}

void Failure::raise(const std::string& text, const std::string& file) {
  if (const int reason = reasonAtEnd(text); reason != 0) throw Failure(SYSTEM, text, file, reason);
  throw py::value_error(text);
}

void Failure::toPython() const {
  const py::module_ errors = py::module_::import("veltra._errors");
  const py::object error =
      _kind == SYSTEM ? errors.attr("of_system")(textOf(_text), nameOf(_file), _reason)
                      : errors.attr("DamageError")(textOf(_text), nameOf(_file), py::int_(_offset), textOf(_code));
  PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
}

void Unlocked::lock() noexcept {
  try {
    PyEval_RestoreThread(_state);
  } catch (const abi::__forced_unwind&) {
    for (;;) ::pause();
  }
}

void runLong(const std::function<void(const IsStopped&)>& work) {
  constexpr auto PAUSE = std::chrono::milliseconds(50);
  IsStopped isStopped{false};
  std::exception_ptr failure, interruption;
  std::promise<void> promise;
  const std::future<void> done = promise.get_future();
  const auto attempt = [&] {
    try {
      work(isStopped);
    } catch (...) {
      failure = std::current_exception();
    }
    promise.set_value();
  };
  {
    Unlocked unlocked;
    std::thread thread;
    try {
      thread = std::thread(attempt);
    } catch (const std::system_error&) {  // no more threads: Ctrl-C waits
      attempt();
    }
    while (done.wait_for(PAUSE) != std::future_status::ready) {
      unlocked.locked([&] {
        if (interruption != nullptr || PyErr_CheckSignals() == 0) return;
        interruption = std::make_exception_ptr(py::error_already_set());
        isStopped = true;
      });
    }
    if (thread.joinable()) thread.join();
  }
  if (interruption != nullptr) std::rethrow_exception(interruption);
  if (failure != nullptr) std::rethrow_exception(failure);
}

Inspect::ReadingOptions readingUntil(const IsStopped& isStopped, unsigned threads) {
  const auto check = [&isStopped] {
    if (isStopped) throw Stopped();
  };
  Inspect::ReadingOptions options;
  options.threads = threads;
  options.onRead = [check](uint64_t) { check(); };
  options.onFile = check;
  return options;
}

void stopReading(Inspect::ByteSource& source, const IsStopped& isStopped) {
  source.onRead([&isStopped](std::size_t) {
    if (isStopped) throw Stopped();
  });
}

StoppableRun::StoppableRun(Inspect::FileRun& run, const IsStopped& isStopped) : _run(run) {
  run.onRead([&isStopped] {
    if (isStopped) throw Stopped();
  });
}

}  // namespace Binding
