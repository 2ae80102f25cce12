#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <libinspect/job/JobFiles.h>

// Lists of these stay as they are, and do not become lists of Python.
#include <pybind11/stl.h>
PYBIND11_MAKE_OPAQUE(std::vector<Inspect::FileRow>)

namespace Binding {

/// The files of a call, or a part of them that another process reads.
struct Run {
  Run() = default;
  /// Lists them. Called with the interpreter's lock, like read().
  Run(std::vector<std::string> paths, bool recursive);

  std::unique_ptr<Inspect::FileRun> fileRun() const;
  /// The files in this many parts, 1 or more, of nearly one size.
  std::vector<Run> parts(std::size_t count) const;
  /// A row for each folder that could not be listed.
  std::vector<Inspect::FileRow> faultRows() const;
  /// Appends the rows of the files from `begin` to `end`.
  /// @param run  that of fileRun()
  void read(const Inspect::FileRun& run, std::size_t begin, std::size_t end, unsigned threads,
            std::vector<Inspect::FileRow>& rows) const;

  std::vector<std::string> files;
  std::vector<std::string> named;   ///< of them, or the folders they are in
  std::vector<std::string> faults;  ///< a line for each folder that could not be listed
  std::size_t passedOver = 0;
  std::optional<std::vector<std::string>> extensions;  ///< of results in the whole run, where that is known
};

}  // namespace Binding
