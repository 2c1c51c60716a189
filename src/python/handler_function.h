#pragma once

#include <pybind11/pybind11.h>

namespace context_delta::python {

/// Adds handle_build_delta_context_pack, and SYMBOLS_PER_FILE as the server has it now, to a
/// module.
void add_handler_function(pybind11::module_& module);

}  // namespace context_delta::python
