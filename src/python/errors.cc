#include "python/errors.h"

#include <new>

#include "python/python_error.h"
#include "storage/database.h"
#include "utils/git_utils.h"
#include "wiki/wiki_lens.h"

namespace context_delta::python {
namespace {

/// Made once, kept as long as the process lives.
struct Classes {
  PyObject* git_history = nullptr;
  PyObject* repository_index = nullptr;
  PyObject* wiki = nullptr;
};

PyObject* new_class(const char* name, const char* doc) {
  PyObject* type = PyErr_NewExceptionWithDoc(name, doc, PyExc_RuntimeError, nullptr);
  if (type == nullptr) throw_raised();
  return type;
}

const Classes& classes() {
  static const Classes classes{
      new_class("context_delta.GitHistoryError",
                "A repository or revisions that git cannot work with."),
      new_class("context_delta.RepositoryIndexError",
                "The index cannot be opened, read or written."),
      new_class("context_delta.WikiError", "The wiki's folder cannot be read."),
  };
  return classes;
}

}  // namespace

void add_errors(pybind11::module_& module) {
  module.attr("GitHistoryError") = pybind11::handle(classes().git_history);
  module.attr("RepositoryIndexError") = pybind11::handle(classes().repository_index);
  module.attr("WikiError") = pybind11::handle(classes().wiki);
}

void set_raised(std::exception_ptr error) {
  try {
    if (error) std::rethrow_exception(error);
  } catch (const PythonError& raised) {
    raised.restore();
  } catch (const git_utils::GitHistoryError& raised) {
    PyErr_SetString(classes().git_history, raised.what());
  } catch (const storage::IndexError& raised) {
    PyErr_SetString(classes().repository_index, raised.what());
  } catch (const wiki::WikiError& raised) {
    PyErr_SetString(classes().wiki, raised.what());
  }
}

}  // namespace context_delta::python
