#include "python/python_error.h"

#include "python/names.h"

namespace context_delta::python {
namespace {

/// The class that the server's git service has now; null while there is none.
py::object git_history_error() {
  const auto module =
      py::reinterpret_steal<py::object>(PyImport_GetModule(interned<"workers.git_history">()));
  py::object type;
  if (module) {
    type = py::reinterpret_steal<py::object>(
        PyObject_GetAttr(module.ptr(), interned<"GitHistoryError">()));
  }
  PyErr_Clear();
  return type;
}

}  // namespace

PythonError PythonError::taken() {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* traceback = nullptr;
  PyErr_Fetch(&type, &value, &traceback);
  PyErr_NormalizeException(&type, &value, &traceback);
  PythonError error;
  error.type_ = py::reinterpret_steal<py::object>(type);
  error.value_ = py::reinterpret_steal<py::object>(value);
  error.traceback_ = py::reinterpret_steal<py::object>(traceback);
  return error;
}

void PythonError::restore() const {
  PyErr_Restore(type_.inc_ref().ptr(), value_.inc_ref().ptr(), traceback_.inc_ref().ptr());
}

void throw_raised() {
  PythonError error = PythonError::taken();
  const py::object expected = git_history_error();
  if (expected && PyErr_GivenExceptionMatches(error.value().ptr(), expected.ptr()) != 0) {
    throw HostGitHistoryError(std::move(error));
  }
  throw error;
}

}  // namespace context_delta::python
