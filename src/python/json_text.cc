#include "python/json_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

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

/// The text while it is written, of characters as wide as those of one kind of Python's strings.
template <class Character>
class Text {
 public:
  Text() {
    begin_ = next_ = inside_.data();
    end_ = begin_ + inside_.size();
  }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;

  /// Room for this many characters more: what is put must have been reserved.
  void reserve(std::size_t count) {
    if (static_cast<std::size_t>(end_ - next_) < count) grow(count);
  }
  void put(char character) { *next_++ = static_cast<Character>(character); }
  void put(std::string_view characters) {
    for (const char each : characters) put(each);
  }
  template <class Source>
  void put(const Source* first, const Source* last) {
    next_ = std::copy(first, last, next_);
  }

  const Character* data() const { return begin_; }
  Py_ssize_t size() const { return next_ - begin_; }

 private:
  void grow(std::size_t count) {
    const auto used = static_cast<std::size_t>(next_ - begin_);
    std::vector<Character> larger(2 * (used + count));
    std::copy(begin_, next_, larger.begin());
    outside_ = std::move(larger);
    begin_ = outside_.data();
    next_ = begin_ + used;
    end_ = begin_ + outside_.size();
  }

  std::array<Character, 1024> inside_;  // holds most rows
  std::vector<Character> outside_;      // the text when it is longer
  Character *begin_, *next_, *end_;
};

constexpr std::size_t LONGEST_ESCAPE = 6;
constexpr std::size_t LONGEST_NUMBER = 40;

template <class Character>
void put_escaped(Text<Character>& text, Py_UCS4 character) {
  switch (character) {
    case '"':
      return text.put("\\\"");
    case '\\':
      return text.put("\\\\");
    case '\b':
      return text.put("\\b");
    case '\f':
      return text.put("\\f");
    case '\n':
      return text.put("\\n");
    case '\r':
      return text.put("\\r");
    case '\t':
      return text.put("\\t");
    default:
      break;
  }
  text.put("\\u00");
  text.put("0123456789abcdef"[character >> 4]);
  text.put("0123456789abcdef"[character & 15]);
}

constexpr auto ESCAPED = [] {
  std::array<bool, 256> escaped{};
  for (std::size_t i = 0; i < 0x20; ++i) escaped[i] = true;
  escaped['"'] = escaped['\\'] = true;
  return escaped;
}();

bool is_plain(Py_UCS4 character) { return character > 0xff || !ESCAPED[character]; }

template <class Character, class Source>
void put_string(Text<Character>& text, const Source* characters, Py_ssize_t length) {
  text.reserve(LONGEST_ESCAPE * static_cast<std::size_t>(length) + 2);
  const Source* const end = characters + length;
  const Source* plain = characters;
  text.put('"');
  for (const Source* each = characters; each != end; ++each) {
    if (is_plain(*each)) continue;
    text.put(plain, each);
    put_escaped(text, *each);
    plain = each + 1;
  }
  text.put(plain, end);
  text.put('"');
}

template <class Character>
Written write_string(Text<Character>& text, PyObject* string) {
  if (PyUnicode_READY(string) != 0) throw_raised();
  const Py_ssize_t length = PyUnicode_GET_LENGTH(string);
  switch (PyUnicode_KIND(string)) {
    case PyUnicode_1BYTE_KIND:
      put_string(text, PyUnicode_1BYTE_DATA(string), length);
      return Written::YES;
    case PyUnicode_2BYTE_KIND:
      if constexpr (sizeof(Character) == 1) return Written::WIDER;
      put_string(text, PyUnicode_2BYTE_DATA(string), length);
      return Written::YES;
    default:
      if constexpr (sizeof(Character) == 1) return Written::WIDER;
      put_string(text, PyUnicode_4BYTE_DATA(string), length);
      return Written::YES;
  }
}

template <class Character>
Written write_integer(Text<Character>& text, PyObject* integer) {
  int overflow = 0;
  const std::int64_t number = PyLong_AsLongLongAndOverflow(integer, &overflow);
  if (overflow != 0) return Written::NO;
  char digits[LONGEST_NUMBER];
  text.reserve(sizeof digits);
  text.put(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
  return Written::YES;
}

template <class Character>
Written write_float(Text<Character>& text, double number) {
  text.reserve(LONGEST_NUMBER);
  if (number != number) {
    text.put("NaN");
  } else if (number - number != 0) {
    text.put(number < 0 ? "-Infinity" : "Infinity");
  } else {
    const std::unique_ptr<char, decltype(&PyMem_Free)> digits(
        PyOS_double_to_string(number, 'r', 0, Py_DTSF_ADD_DOT_0, nullptr), &PyMem_Free);
    if (!digits) throw_raised();
    text.put(std::string_view(digits.get()));
  }
  return Written::YES;
}

template <class Character>
Written write(Text<Character>& text, PyObject* value, int levels);

template <class Character>
Written write_mapping(Text<Character>& text, PyObject* mapping, int levels) {
  text.reserve(2);
  text.put('{');
  Py_ssize_t position = 0;
  PyObject* key = nullptr;
  PyObject* value = nullptr;
  for (bool first = true; PyDict_Next(mapping, &position, &key, &value) != 0; first = false) {
    if (!PyUnicode_CheckExact(key)) return Written::NO;
    text.reserve(2);
    if (!first) text.put(", ");
    if (const Written written = write_string(text, key); written != Written::YES) return written;
    text.reserve(3);
    text.put(": ");
    if (const Written written = write(text, value, levels); written != Written::YES) return written;
  }
  text.reserve(1);
  text.put('}');
  return Written::YES;
}

/// A list or a tuple.
template <class Character>
Written write_sequence(Text<Character>& text, PyObject* sequence, int levels) {
  text.reserve(2);
  text.put('[');
  const Py_ssize_t size = PySequence_Fast_GET_SIZE(sequence);
  for (Py_ssize_t i = 0; i < size; ++i) {
    text.reserve(2);
    if (i != 0) text.put(", ");
    const Written written = write(text, PySequence_Fast_GET_ITEM(sequence, i), levels);
    if (written != Written::YES) return written;
  }
  text.reserve(1);
  text.put(']');
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
    text.reserve(LONGEST_NUMBER);
    text.put(value == Py_None ? "null" : value == Py_True ? "true" : "false");
    return Written::YES;
  }
  return Written::NO;
}

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
