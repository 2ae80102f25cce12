#pragma once

#include <pybind11/pybind11.h>

#include <libinspect/job/JobFiles.h>

namespace Binding {

namespace py = pybind11;

// The parts of the module.
void bindFiles(py::module_& module);
void bindRows(py::module_& module);
void bindJobs(py::module_& module);
void bindWriter(py::module_& module);

/// A class that people see as one of the package, not of the module in it.
template <class Class>
Class exported(Class bound) {
  bound.attr("__module__") = "veltra";
  return bound;
}

/// The row of a file as a veltra.Result.
py::object newResult(Inspect::FileRow row);

}  // namespace Binding
