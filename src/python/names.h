#pragma once

#include <string_view>

#include <pybind11/pybind11.h>

#include "tool_handlers/context_delta/fields.h"

namespace context_delta::python {

/// A name as a Python string, made once and kept: attribute and key look-ups compare it by address.
/// `name` must be a literal, whose own address may be remembered.
PyObject* interned(std::string_view name);

template <FieldName name>
PyObject* interned() {
  static PyObject* const text = interned(std::string_view(name.text));
  return text;
}

}  // namespace context_delta::python
