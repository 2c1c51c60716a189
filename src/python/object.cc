#include "python/object.h"

#include <algorithm>
#include <array>

#include "python/python_error.h"

namespace context_delta::python {
namespace {

/// The truth of what a comparison or a test returned; -1 is its failure.
bool checked(int answer) {
  if (answer < 0) throw_raised();
  return answer != 0;
}

}  // namespace

Object Object::taken(PyObject* reference) {
  if (reference == nullptr) throw_raised();
  return Object(py::reinterpret_steal<py::object>(reference));
}

Object Object::borrowed(PyObject* reference) {
  return Object(py::reinterpret_borrow<py::object>(reference));
}

Object::operator bool() const { return checked(PyObject_IsTrue(ptr())); }

OptionalObject Object::get(const Object& key) const {
  if (PyDict_CheckExact(ptr())) {
    PyObject* value = PyDict_GetItemWithError(ptr(), key.ptr());
    if (value == nullptr && PyErr_Occurred() != nullptr) throw_raised();
    return OptionalObject(value == nullptr ? Object() : borrowed(value));
  }
  return OptionalObject(call(attribute<"get">(), {key.ptr()}));
}

std::size_t Object::size() const {
  const Py_ssize_t size = PyObject_Size(ptr());
  if (size < 0) throw_raised();
  return static_cast<std::size_t>(size);
}

Object Object::operator[](Py_ssize_t position) const {
  const Object key = taken(PyLong_FromSsize_t(position));
  return taken(PyObject_GetItem(ptr(), key.ptr()));
}

bool operator==(const Object& a, const Object& b) {
  return checked(PyObject_RichCompareBool(a.ptr(), b.ptr(), Py_EQ));
}

bool operator!=(const Object& a, const Object& b) {
  return static_cast<bool>(Object::taken(PyObject_RichCompare(a.ptr(), b.ptr(), Py_NE)));
}

std::weak_ordering operator<=>(const Object& a, const Object& b) {
  if (a == b) return std::weak_ordering::equivalent;
  const bool less = static_cast<bool>(Object::taken(PyObject_RichCompare(a.ptr(), b.ptr(), Py_LT)));
  return less ? std::weak_ordering::less : std::weak_ordering::greater;
}

Iterator::Iterator(const Object& iterable)
    : iterator_(Object::taken(PyObject_GetIter(iterable.ptr()))) {
  ++*this;
}

Iterator& Iterator::operator++() {
  PyObject* next = PyIter_Next(iterator_.ptr());
  if (next != nullptr) {
    current_ = Object::taken(next);
  } else {
    if (PyErr_Occurred() != nullptr) throw_raised();
    current_.reset();
  }
  return *this;
}

Object new_list(const std::vector<Object>& objects) {
  Object list = Object::taken(PyList_New(static_cast<Py_ssize_t>(objects.size())));
  for (std::size_t i = 0; i < objects.size(); ++i) {
    PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i), Py_NewRef(objects[i].ptr()));
  }
  return list;
}

std::vector<Object> items_of(const Object& iterable) {
  std::vector<Object> items;
  for (const Object& item : iterable) items.push_back(item);
  return items;
}

Object call(const Object& callable, std::initializer_list<PyObject*> arguments, PyObject* names) {
  // One place before the arguments is the callee's to use.
  std::array<PyObject*, 8> places{};
  std::copy(arguments.begin(), arguments.end(), places.begin() + 1);
  const auto named = names == nullptr ? 0 : static_cast<std::size_t>(PyTuple_GET_SIZE(names));
  return Object::taken(
      PyObject_Vectorcall(callable.ptr(), places.data() + 1,
                          (arguments.size() - named) | PY_VECTORCALL_ARGUMENTS_OFFSET, names));
}

std::string text_of(const Object& string) {
  if (PyUnicode_Check(string.ptr()) == 0) {
    PyErr_Format(PyExc_TypeError, "expected a string, not %.200s", Py_TYPE(string.ptr())->tp_name);
    throw_raised();
  }
  const Object bytes =
      Object::taken(PyUnicode_AsEncodedString(string.ptr(), "utf-8", "surrogatepass"));
  return {PyBytes_AS_STRING(bytes.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()))};
}

Object new_string(const std::string& text) {
  return Object::taken(
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogatepass"));
}

void missing_key(const Object& key) {
  // Made here: a tuple as the value to be set would become the error's arguments.
  const Object error = call(Object::borrowed(PyExc_KeyError), {key.ptr()});
  PyErr_SetObject(PyExc_KeyError, error.ptr());
  throw_raised();
}

}  // namespace context_delta::python

std::size_t std::hash<context_delta::python::Object>::operator()(
    const context_delta::python::Object& object) const {
  const Py_hash_t answer = PyObject_Hash(object.ptr());
  if (answer == -1) context_delta::python::throw_raised();
  return static_cast<std::size_t>(answer);
}
