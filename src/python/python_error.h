#pragma once

#include <utility>

#include <pybind11/pybind11.h>

namespace context_delta::python {

namespace py = pybind11;

/// A Python exception on its way through C++, as it was raised: type, value and traceback. Like
/// every object of this folder it needs the interpreter lock.
class PythonError {
 public:
  /// Takes the exception that is set in the interpreter; there must be one.
  static PythonError taken();

  /// Sets the exception again, for whoever called us.
  void restore() const;

  const py::object& value() const { return value_; }

 private:
  py::object type_, value_, traceback_;
};

/// An exception of the host's `workers.git_history.GitHistoryError` or a type derived from it.
class HostGitHistoryError : public PythonError {
 public:
  explicit HostGitHistoryError(PythonError error) : PythonError(std::move(error)) {}
};

/// Throws the exception that is set in the interpreter: a HostGitHistoryError when it is one.
[[noreturn]] void throw_raised();

}  // namespace context_delta::python
