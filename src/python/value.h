#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "python/integer.h"
#include "python/object.h"

namespace context_delta::python {

/// A row of the pack: a new dict, or the mapping that the host made, extended as it is.
class Row {
 public:
  Row() : mapping_(Object::taken(PyDict_New())) {}
  explicit Row(Object mapping) : mapping_(std::move(mapping)) {}

  /// `row[key] = value`; `key` is one of the few that packs have.
  void set(std::string_view key, const Object& value);
  /// `row[key]`
  Object at(std::string_view key) const;

  const Object& object() const { return mapping_; }

 private:
  Object mapping_;
};

/// What a row holds: an object of the host as it is, or a new one.
class Value : public Object {
 public:
  Value() = default;
  explicit Value(Object object) : Object(std::move(object)) {}
  explicit Value(const Row& row) : Object(row.object()) {}
  explicit Value(const std::vector<Row>& rows);
  explicit Value(const Integer& number) : Object(number.object()) {}
  explicit Value(std::int64_t number) : Value(Integer(number)) {}
  explicit Value(bool flag) : Object(borrowed(flag ? Py_True : Py_False)) {}
  explicit Value(const std::string& text) : Object(new_string(text)) {}
  explicit Value(const char* text) : Value(std::string(text)) {}
};

}  // namespace context_delta::python
