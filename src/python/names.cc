#include "python/names.h"

#include <array>
#include <cstdint>
#include <unordered_map>

#include "python/python_error.h"

namespace context_delta::python {

namespace {

PyObject* known_text(std::string_view name) {
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

/// The last name that was asked for from an address.
struct Recent {
  std::string_view name;
  PyObject* text = nullptr;
};

}  // namespace

PyObject* interned(std::string_view name) {
  static std::array<Recent, 256> recent;
  Recent& place = recent[(reinterpret_cast<std::uintptr_t>(name.data()) >> 2) % recent.size()];
  if (place.name.data() != name.data() || place.name.size() != name.size()) {
    place = {name, known_text(name)};
  }
  return place.text;
}

}  // namespace context_delta::python
