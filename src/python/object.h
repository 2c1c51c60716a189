#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/pybind11.h>

#include "python/names.h"

/// Values of the host as the component holds them. Whatever one of these operations raises in
/// Python is thrown as throw_raised() does.
namespace context_delta::python {

namespace py = pybind11;

class Object;

/// An object, or null where Python has None.
class OptionalObject;

/// Any Python object; None by default. As a condition it is tested for truth.
class Object {
 public:
  Object() : object_(py::none()) {}
  explicit Object(py::object object) : object_(std::move(object)) {}

  /// Takes over a new reference that a function of the interpreter returned, or its failure.
  static Object taken(PyObject* reference);
  static Object borrowed(PyObject* reference);

  PyObject* ptr() const { return object_.ptr(); }
  bool is_none() const { return object_.is_none(); }
  explicit operator bool() const;

  /// The attribute of this name, looked up now.
  template <FieldName name>
  Object attribute() const {
    return taken(PyObject_GetAttr(ptr(), interned<name>()));
  }

  /// `self.get(key)`
  OptionalObject get(const Object& key) const;
  /// `len(self)`
  std::size_t size() const;
  /// `self[position]`
  Object operator[](Py_ssize_t position) const;

 private:
  py::object object_;
};

class OptionalObject {
 public:
  OptionalObject() = default;
  explicit OptionalObject(Object object) : object_(std::move(object)) {}
  explicit operator bool() const { return !object_.is_none(); }
  const Object& operator*() const { return object_; }

 private:
  Object object_;
};

/// Equal as keys of a mapping are: the same object, or equal by the host's word.
bool operator==(const Object& a, const Object& b);
/// The host's own `!=`.
bool operator!=(const Object& a, const Object& b);
/// As elements of tuples are compared: equal, or less, or else greater.
std::weak_ordering operator<=>(const Object& a, const Object& b);

/// Goes through what an object iterates over, from beginning to end.
class Iterator {
 public:
  struct End {};
  explicit Iterator(const Object& iterable);
  bool operator!=(End) const { return current_.has_value(); }
  const Object& operator*() const { return *current_; }
  Iterator& operator++();

 private:
  Object iterator_;
  std::optional<Object> current_;
};

inline Iterator begin(const Object& iterable) { return Iterator(iterable); }
inline Iterator::End end(const Object&) { return {}; }

/// A new list of the objects.
Object new_list(const std::vector<Object>& objects);
/// What an object iterates over.
std::vector<Object> items_of(const Object& iterable);

/// Calls with the arguments in order; the last ones have the names of the tuple `names`, if any.
Object call(const Object& callable, std::initializer_list<PyObject*> arguments,
            PyObject* names = nullptr);

/// A tuple of names for call(), made once and kept.
template <FieldName... names>
PyObject* argument_names() {
  static const auto& tuple = *new Object(
      Object::taken(PyTuple_Pack(static_cast<Py_ssize_t>(sizeof...(names)), interned<names>()...)));
  return tuple.ptr();
}

/// A string as UTF-8 and back; lone surrogates stay what they are. Raises TypeError for an object
/// that is no string.
std::string text_of(const Object& string);
Object new_string(const std::string& text);

/// Ends the look-up of a key that must be there with a KeyError.
[[noreturn]] void missing_key(const Object& key);

}  // namespace context_delta::python

template <>
struct std::hash<context_delta::python::Object> {
  std::size_t operator()(const context_delta::python::Object& object) const;
};
