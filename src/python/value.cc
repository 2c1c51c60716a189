#include "python/value.h"

#include "python/python_error.h"

namespace context_delta::python {

void Row::set(std::string_view key, const Object& value) {
  PyObject* const name = interned(key);
  const int status = PyDict_CheckExact(mapping_.ptr())
                         ? PyDict_SetItem(mapping_.ptr(), name, value.ptr())
                         : PyObject_SetItem(mapping_.ptr(), name, value.ptr());
  if (status != 0) throw_raised();
}

Object Row::at(std::string_view key) const {
  return Object::taken(PyObject_GetItem(mapping_.ptr(), interned(key)));
}

Value::Value(const std::vector<Row>& rows)
    : Object(taken(PyList_New(static_cast<Py_ssize_t>(rows.size())))) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    PyList_SET_ITEM(ptr(), static_cast<Py_ssize_t>(i), Py_NewRef(rows[i].object().ptr()));
  }
}

}  // namespace context_delta::python
