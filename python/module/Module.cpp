#include "Module.h"

#include <stdexcept>

#include <libcrossplatform/common/Version.h>

#include "Running.h"
#include "Values.h"

namespace {

/// With its text, which may have the name of a file in it that is no UTF-8.
void setError(PyObject* type, const std::exception& error) {
  PyErr_SetObject(type, Binding::textOf(error.what()).ptr());
}

}  // namespace

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
    } catch (const pybind11::index_error& error) {
      setError(PyExc_IndexError, error);
    } catch (const pybind11::value_error& error) {
      setError(PyExc_ValueError, error);
    } catch (const std::invalid_argument& error) {
      setError(PyExc_ValueError, error);
    }
  });
  module.attr("__version__") = VELTRA_VERSION_TEXT;
  Binding::bindFiles(module);
  Binding::bindRows(module);
  Binding::bindJobs(module);
  Binding::bindWriter(module);
}
