#include "python/handler_function.h"

#include <array>
#include <exception>
#include <optional>

#include "python/delta.h"
#include "python/errors.h"
#include "python/host_services.h"
#include "python/python_error.h"
#include "workers/git_history.h"

namespace context_delta::python {
namespace {

/// What Python tools show: the first line is the signature, and is no part of `__doc__`.
constexpr const char* DOC =
    "handle_build_delta_context_pack($module, /, repository, repo_root, base_branch=None, "
    "target_branch=None, token_budget=4000, include_call_graph=True, include_snippets=False, "
    "source_only=True, wiki_lens=None)\n"
    "--\n"
    "\n"
    "The changes of a branch since it left its base, within a token budget.\n"
    "\n"
    "repository: the index of the checked-out branch: a context_delta.Repository, which is "
    "brought\n"
    "    up to date first, or the handle of the server that imported this module.\n"
    "repo_root: the root of the repository, a path.\n"
    "base_branch: the base; None for the repository's default branch.\n"
    "target_branch: the branch reviewed; None for what is checked out.\n"
    "token_budget: the most tokens of files, symbols, callers and snippets; wiki pages are paid\n"
    "    from it first.\n"
    "include_call_graph: list the callers of the changed symbols.\n"
    "include_snippets: show the first changed lines of the first files.\n"
    "source_only: no tests, documents or generated files.\n"
    "wiki_lens: the wiki pages built from the changed files: a context_delta.WikiLens, or the\n"
    "    server's.\n"
    "\n"
    "Returns the delta context pack, a new dict:\n"
    "    base_branch, target_branch, commit_count: what was compared\n"
    "    affected_files: the changed files by impact\n"
    "    symbols: the symbols on the changed lines\n"
    "    callers: callers proven by a call edge\n"
    "    neighbours: guessed callers, each with its relation and reason\n"
    "    snippets: the first changed lines of the first files shown\n"
    "    total_changed_files, excluded_files, total_changed_symbols: what was found\n"
    "    files_omitted, symbols_omitted, callers_omitted, neighbours_omitted: what the budget "
    "left\n"
    "        out; truncated: whether it left anything out\n"
    "    tokens_used: the tokens spent\n"
    "    wiki_pages, warning, message: only when there is one\n"
    "When git cannot compare the branches, the lists are empty and `error` says why. Whatever "
    "else\n"
    "the repository or the server raises passes through; with a context_delta.Repository that is\n"
    "RepositoryIndexError or WikiError.";

constexpr const char* NAME = "handle_build_delta_context_pack";

/// The server's SYMBOLS_PER_ROW: read when this module is loaded or, when there was no server yet,
/// at its first call. Null before.
PyObject* symbols_per_row = nullptr;

/// None while there is no server: the first call of its modules then says which is missing.
Object server_symbols_per_row(py::handle module) {
  if (symbols_per_row != nullptr) return Object::borrowed(symbols_per_row);
  const std::optional<Object> value = host_symbols_per_row();
  if (!value) return Object();
  symbols_per_row = Py_NewRef(value->ptr());
  module.attr("SYMBOLS_PER_FILE") = py::handle(symbols_per_row);
  return *value;
}

DeltaArguments parsed(PyObject* positional, PyObject* named) {
  static const std::array<const char*, 10> names = {
      "repository",         "repo_root",        "base_branch", "target_branch", "token_budget",
      "include_call_graph", "include_snippets", "source_only", "wiki_lens",     nullptr};
  const Object budget = Integer(std::int64_t{4000}).object();
  PyObject* values[9] = {nullptr, nullptr,  Py_None, Py_None, budget.ptr(),
                         Py_True, Py_False, Py_True, Py_None};
  if (PyArg_ParseTupleAndKeywords(positional, named, "OO|OOOOOOO:handle_build_delta_context_pack",
                                  const_cast<char**>(names.data()), &values[0], &values[1],
                                  &values[2], &values[3], &values[4], &values[5], &values[6],
                                  &values[7], &values[8]) == 0) {
    throw_raised();
  }
  return {Object::borrowed(values[0]), Object::borrowed(values[1]), Object::borrowed(values[2]),
          Object::borrowed(values[3]), Object::borrowed(values[4]), Object::borrowed(values[5]),
          Object::borrowed(values[6]), Object::borrowed(values[7]), Object::borrowed(values[8])};
}

Object delta_pack(py::handle module, const DeltaArguments& arguments) {
  const py::handle repository(arguments.repository.ptr());
  if (py::isinstance<NativeRepository>(repository)) {
    return native_delta_pack(repository.cast<const NativeRepository&>(), arguments);
  }
  return host_delta_pack(arguments, server_symbols_per_row(module));
}

PyObject* handle(PyObject* module, PyObject* positional, PyObject* named) {
  try {
    const Object pack = delta_pack(module, parsed(positional, named));
    return Py_NewRef(pack.ptr());
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const py::builtin_exception& error) {
    error.set_error();
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (...) {
    try {
      set_raised(std::current_exception());
    } catch (const std::exception& error) {
      PyErr_SetString(PyExc_RuntimeError, error.what());
    }
  }
  return nullptr;
}

PyMethodDef method = {NAME, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&handle)),
                      METH_VARARGS | METH_KEYWORDS, DOC};

}  // namespace

void add_handler_function(pybind11::module_& module) {
  const Object name(module.attr("__name__"));
  const Object function = Object::taken(PyCFunction_NewEx(&method, module.ptr(), name.ptr()));
  module.attr(NAME) = py::handle(function.ptr());
  module.attr("SYMBOLS_PER_FILE") = git_history::SYMBOLS_PER_ROW;
  server_symbols_per_row(module);
}

}  // namespace context_delta::python
