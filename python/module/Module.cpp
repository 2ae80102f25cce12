#include "Module.h"

#include <libcrossplatform/common/Version.h>

#include "Running.h"

PYBIND11_MODULE(_veltra, module) {
  module.doc() = "What the package veltra has from the library.";
  pybind11::options options;
  options.disable_function_signatures();
  pybind11::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const Binding::Failure& failure) {
      failure.toPython();
    } catch (const Binding::Stopped&) {
      PyErr_SetNone(PyExc_KeyboardInterrupt);
    }
  });
  module.attr("__version__") = VELTRA_VERSION_TEXT;
  Binding::bindFiles(module);
  Binding::bindRows(module);
  Binding::bindJobs(module);
  Binding::bindWriter(module);
}
