#pragma once

#include <exception>

#include <pybind11/pybind11.h>

namespace context_delta::python {

/// Adds the exception classes to a module: GitHistoryError, RepositoryIndexError and WikiError, all
/// RuntimeErrors.
void add_errors(pybind11::module_& module);

/// Sets the Python exception for a C++ one; those of Python go on as they were raised.
void set_raised(std::exception_ptr error);

}  // namespace context_delta::python
