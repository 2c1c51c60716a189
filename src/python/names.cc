#include "python/names.h"

#include <unordered_map>

#include "python/python_error.h"

namespace context_delta::python {

PyObject* interned(std::string_view name) {
  // Never destroyed: the interpreter may be gone before static objects are. Views of the texts
  // that the strings themselves hold.
  static auto& known = *new std::unordered_map<std::string_view, PyObject*>();
  const auto found = known.find(name);
  if (found != known.end()) return found->second;
  PyObject* text = PyUnicode_FromStringAndSize(name.data(), static_cast<Py_ssize_t>(name.size()));
  if (text == nullptr) throw_raised();
  PyUnicode_InternInPlace(&text);
  Py_ssize_t length = 0;
  const char* characters = PyUnicode_AsUTF8AndSize(text, &length);
  if (characters == nullptr) throw_raised();
  known.emplace(std::string_view(characters, static_cast<std::size_t>(length)), text);
  return text;
}

}  // namespace context_delta::python
