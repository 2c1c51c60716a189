#include "python/conversion.h"

#include <limits>
#include <type_traits>

#include "python/python_error.h"
#include "python/value.h"

namespace context_delta::python {
namespace {

Object object_of(const json::List& list) {
  std::vector<Object> items;
  items.reserve(list.size());
  for (const json::Value& item : list) items.push_back(python::object_of(item));
  return new_list(items);
}

}  // namespace

Object object_of(const json::Mapping& mapping) {
  Row row;
  for (const auto& [key, value] : mapping) {
    const Object name = new_string(key);
    const Object object = object_of(value);
    if (PyDict_SetItem(row.object().ptr(), name.ptr(), object.ptr()) != 0) throw_raised();
  }
  return row.object();
}

Object object_of(const json::Value& value) {
  if (const auto* flag = value.as<bool>()) return Value(*flag);
  if (const auto* number = value.as<std::int64_t>()) return Value(*number);
  if (const auto* number = value.as<double>()) return Object::taken(PyFloat_FromDouble(*number));
  if (const auto* text = value.as<std::string>()) return new_string(*text);
  if (const auto* list = value.as<json::List>()) return object_of(*list);
  if (const auto* mapping = value.as<json::Mapping>()) return object_of(*mapping);
  return Object();
}

std::filesystem::path path_of(const Object& value) {
  PyObject* bytes = nullptr;
  if (PyUnicode_FSConverter(value.ptr(), &bytes) == 0) throw_raised();
  const Object owned = Object::taken(bytes);
  return std::string(PyBytes_AS_STRING(bytes), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes)));
}

std::optional<std::string> optional_text(const Object& value, const char* parameter) {
  if (value.is_none()) return std::nullopt;
  if (PyUnicode_Check(value.ptr()) == 0) {
    PyErr_Format(PyExc_TypeError, "%s must be a string or None, not %.200s", parameter,
                 Py_TYPE(value.ptr())->tp_name);
    throw_raised();
  }
  const Object bytes = Object::taken(PyUnicode_EncodeFSDefault(value.ptr()));
  return std::string(PyBytes_AS_STRING(bytes.ptr()),
                     static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
}

std::int64_t integer_of(const Object& value) {
  const Object integer = Object::taken(PyNumber_Index(value.ptr()));
  int overflow = 0;
  const std::int64_t number = PyLong_AsLongLongAndOverflow(integer.ptr(), &overflow);
  if (overflow > 0) return std::numeric_limits<std::int64_t>::max();
  if (overflow < 0) return std::numeric_limits<std::int64_t>::min();
  return number;
}

}  // namespace context_delta::python
