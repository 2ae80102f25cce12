#pragma once

#include <pybind11/pybind11.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>

#include <libinspect/container/ByteSource.h>
#include <libinspect/container/Findings.h>
#include <libinspect/job/FileRun.h>
#include <libinspect/job/ManyFiles.h>

namespace Binding {

namespace py = pybind11;

/// A failure that Python gets as veltra.Error or one of its classes. May be thrown without the interpreter's lock.
class Failure : public std::exception {
 public:
  enum Kind {
    SYSTEM,   ///< an OSError, too: the system refused to open, read or write
    DAMAGED,  ///< the file is damaged, or no container
  };
  /// @param reason  errno of a SYSTEM failure
  Failure(Kind kind, std::string text, std::string file, int reason)
      : _kind(kind), _text(std::move(text)), _file(std::move(file)), _reason(reason) {}
  static Failure damaged(const std::string& text, const std::string& file, Inspect::FindingCode code, uint64_t offset);
  static Failure damaged(const std::string& file, const Inspect::Finding& finding) {
    return damaged(describe(file, finding), file, finding.code, finding.offset);
  }
  /// Of the system if `errno` is what the text ends with, as the text of a file that could not be opened or written
  /// does; otherwise the text itself tells why, as a ValueError.
  [[noreturn]] static void raise(const std::string& text, const std::string& file);

  const char* what() const noexcept override { return _text.c_str(); }
  /// Sets it as the error of the interpreter, whose lock is held.
  void toPython() const;

 private:
  Kind _kind;
  std::string _text;
  std::string _file;
  int _reason;
  std::string _code;
  uint64_t _offset = 0;
};

/// As long as it lives, other threads have the interpreter's lock.
class Unlocked {
 public:
  Unlocked() : _state(PyEval_SaveThread()) {}
  ~Unlocked() { lock(); }
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

  /// Calls with the lock, for a while.
  template <class Work>
  void locked(const Work& work) {
    lock();
    work();
    _state = PyEval_SaveThread();
  }

 private:
  /// Never returns once the interpreter ends, which would unwind the thread, through destructors too: it ends with the
  /// process.
  void lock() noexcept;

  PyThreadState* _state;
};

/// Ends what reads, after Ctrl-C.
struct Stopped : std::exception {
  const char* what() const noexcept override { return "interrupted"; }
};

using IsStopped = std::atomic<bool>;

/// Runs what may take long without the interpreter's lock, on a thread of its own, while this one looks for signals.
/// After one whose handler raised an exception, as that of Ctrl-C does, `isStopped` becomes true: the work has to throw
/// Stopped soon.
/// @throw what the handler raised, or else what the work threw
void runLong(const std::function<void(const IsStopped& isStopped)>& work);

/// How to read many files, ended by `isStopped`.
Inspect::ReadingOptions readingUntil(const IsStopped& isStopped, unsigned threads);
/// The same for one, and for what is asked of a run of files, until then.
void stopReading(Inspect::ByteSource& source, const IsStopped& isStopped);
class StoppableRun {
 public:
  StoppableRun(Inspect::FileRun& run, const IsStopped& isStopped);
  ~StoppableRun() { _run.onRead({}); }
  StoppableRun(const StoppableRun&) = delete;
  StoppableRun& operator=(const StoppableRun&) = delete;

 private:
  Inspect::FileRun& _run;
};

/// The reason, in the manner of errno, of an error that opening a file has just given.
int reasonOf(const std::string& error, const std::string& path);

}  // namespace Binding
