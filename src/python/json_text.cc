#include "python/json_text.h"

#include <charconv>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "python/python_error.h"

namespace context_delta::python {
namespace {

constexpr int MOST_LEVELS = 64;

/// What becomes of writing a value.
enum class Written {
  YES,
  WIDER,  ///< a string has characters that the text's own do not hold
  NO,     ///< a value that is not plain
};

/// The text while it is written; `Character` is as wide as those of Python's strings.
template <class Character>
using Text = std::basic_string<Character>;

template <class Character>
void append_ascii(Text<Character>& text, std::string_view characters) {
  text.append(characters.begin(), characters.end());
}

template <class Character>
void append_escaped(Text<Character>& text, Py_UCS4 character) {
  switch (character) {
    case '"':
      return append_ascii(text, "\\\"");
    case '\\':
      return append_ascii(text, "\\\\");
    case '\b':
      return append_ascii(text, "\\b");
    case '\f':
      return append_ascii(text, "\\f");
    case '\n':
      return append_ascii(text, "\\n");
    case '\r':
      return append_ascii(text, "\\r");
    case '\t':
      return append_ascii(text, "\\t");
    default:
      break;
  }
  append_ascii(text, "\\u00");
  text += static_cast<Character>("0123456789abcdef"[character >> 4]);
  text += static_cast<Character>("0123456789abcdef"[character & 15]);
}

template <class Character, class Source>
void append_string(Text<Character>& text, const Source* characters, Py_ssize_t length) {
  const Source* const end = characters + length;
  const Source* plain = characters;
  text += static_cast<Character>('"');
  for (const Source* each = characters; each != end; ++each) {
    if (*each >= 0x20 && *each != '"' && *each != '\\') continue;
    text.append(plain, each);
    append_escaped(text, *each);
    plain = each + 1;
  }
  text.append(plain, end);
  text += static_cast<Character>('"');
}

template <class Character>
Written write_string(Text<Character>& text, PyObject* string) {
  if (PyUnicode_READY(string) != 0) throw_raised();
  const Py_ssize_t length = PyUnicode_GET_LENGTH(string);
  switch (PyUnicode_KIND(string)) {
    case PyUnicode_1BYTE_KIND:
      append_string(text, PyUnicode_1BYTE_DATA(string), length);
      return Written::YES;
    case PyUnicode_2BYTE_KIND:
      if constexpr (sizeof(Character) == 1) return Written::WIDER;
      append_string(text, PyUnicode_2BYTE_DATA(string), length);
      return Written::YES;
    default:
      if constexpr (sizeof(Character) == 1) return Written::WIDER;
      append_string(text, PyUnicode_4BYTE_DATA(string), length);
      return Written::YES;
  }
}

template <class Character>
Written write_integer(Text<Character>& text, PyObject* integer) {
  int overflow = 0;
  const std::int64_t number = PyLong_AsLongLongAndOverflow(integer, &overflow);
  if (overflow != 0) return Written::NO;
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  append_ascii(text, std::string_view(digits, static_cast<std::size_t>(end - digits)));
  return Written::YES;
}

template <class Character>
Written write_float(Text<Character>& text, double number) {
  if (number != number) {
    append_ascii(text, "NaN");
  } else if (number - number != 0) {
    append_ascii(text, number < 0 ? "-Infinity" : "Infinity");
  } else {
    const std::unique_ptr<char, decltype(&PyMem_Free)> digits(
        PyOS_double_to_string(number, 'r', 0, Py_DTSF_ADD_DOT_0, nullptr), &PyMem_Free);
    if (!digits) throw_raised();
    append_ascii(text, digits.get());
  }
  return Written::YES;
}

template <class Character>
Written write(Text<Character>& text, PyObject* value, int levels);

template <class Character>
Written write_mapping(Text<Character>& text, PyObject* mapping, int levels) {
  text += static_cast<Character>('{');
  Py_ssize_t position = 0;
  PyObject* key = nullptr;
  PyObject* value = nullptr;
  for (bool first = true; PyDict_Next(mapping, &position, &key, &value) != 0; first = false) {
    if (!PyUnicode_CheckExact(key)) return Written::NO;
    if (!first) append_ascii(text, ", ");
    if (const Written written = write_string(text, key); written != Written::YES) return written;
    append_ascii(text, ": ");
    if (const Written written = write(text, value, levels); written != Written::YES) return written;
  }
  text += static_cast<Character>('}');
  return Written::YES;
}

/// A list or a tuple.
template <class Character>
Written write_sequence(Text<Character>& text, PyObject* sequence, int levels) {
  text += static_cast<Character>('[');
  const Py_ssize_t size = PySequence_Fast_GET_SIZE(sequence);
  for (Py_ssize_t i = 0; i < size; ++i) {
    if (i != 0) append_ascii(text, ", ");
    const Written written = write(text, PySequence_Fast_GET_ITEM(sequence, i), levels);
    if (written != Written::YES) return written;
  }
  text += static_cast<Character>(']');
  return Written::YES;
}

/// Runs no Python code, so that nothing changes while it is gone through.
template <class Character>
Written write(Text<Character>& text, PyObject* value, int levels) {
  if (levels == 0) return Written::NO;
  if (PyUnicode_CheckExact(value)) return write_string(text, value);
  if (PyLong_CheckExact(value)) return write_integer(text, value);
  if (PyDict_CheckExact(value)) return write_mapping(text, value, levels - 1);
  if (PyList_CheckExact(value) || PyTuple_CheckExact(value)) {
    return write_sequence(text, value, levels - 1);
  }
  if (PyFloat_CheckExact(value)) return write_float(text, PyFloat_AS_DOUBLE(value));
  if (value == Py_None || value == Py_True || value == Py_False) {
    append_ascii(text, value == Py_None ? "null" : value == Py_True ? "true" : "false");
    return Written::YES;
  }
  return Written::NO;
}

/// An empty Python string stands for no text.
template <class Character>
Written text_in(PyObject* value, Object& result) {
  Text<Character> text;
  const Written written = write(text, value, MOST_LEVELS);
  if (written == Written::YES) {
    constexpr int kind = sizeof(Character) == 1 ? PyUnicode_1BYTE_KIND : PyUnicode_4BYTE_KIND;
    result = Object::taken(
        PyUnicode_FromKindAndData(kind, text.data(), static_cast<Py_ssize_t>(text.size())));
  }
  return written;
}

Object text_by_host(const Object& value) {
  const Object json = Object::taken(PyImport_Import(interned<"json">()));
  return call(json.attribute<"dumps">(), {value.ptr(), Py_False}, argument_names<"ensure_ascii">());
}

}  // namespace

Object json_text(const Object& value) {
  Object text;
  Written written = text_in<Py_UCS1>(value.ptr(), text);
  if (written == Written::WIDER) written = text_in<Py_UCS4>(value.ptr(), text);
  return written == Written::YES ? text : text_by_host(value);
}

Object json_text(const Row& row) { return json_text(row.object()); }

}  // namespace context_delta::python
