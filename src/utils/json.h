#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

/// JSON values whose mappings keep insertion order, and their one-line text.
///
/// Strings are UTF-8, and non-ASCII characters are written as themselves. json_text() is the text
/// on which pack rows are priced, so every character of it is fixed: ", " and ": " as separators.
/// compact_text() is what is sent: fewer tokens say the same.
namespace context_delta::json {

class Value;

using List = std::vector<Value>;

/// String keys to values, in the order of insertion. Meant for few keys: look-up is linear.
class Mapping {
 public:
  using Entry = std::pair<std::string, Value>;

  Mapping() = default;
  Mapping(std::initializer_list<Entry> entries);

  /// Appends the key, or replaces its value where it stands.
  void set(std::string_view key, Value value);
  /// The key's value; null when it has none.
  const Value* find(std::string_view key) const;
  /// The key's value. Raises std::out_of_range when it has none.
  const Value& at(std::string_view key) const;

  std::size_t size() const;
  bool empty() const;
  std::vector<Entry>::const_iterator begin() const;
  std::vector<Entry>::const_iterator end() const;
  friend bool operator==(const Mapping&, const Mapping&);

 private:
  std::vector<Entry> entries_;
};

/// null, boolean, integer, double, string, list or mapping.
class Value {
 public:
  Value() = default;
  Value(std::nullptr_t) {}
  template <class Number>
  requires std::is_arithmetic_v<Number> Value(Number number) {
    if constexpr (std::is_same_v<Number, bool> || std::is_floating_point_v<Number>) {
      value_ = number;
    } else {
      value_ = static_cast<std::int64_t>(number);
    }
  }
  Value(std::string text) : value_(std::move(text)) {}
  Value(std::string_view text) : value_(std::string(text)) {}
  Value(const char* text) : value_(std::string(text)) {}
  Value(List list) : value_(std::move(list)) {}
  Value(Mapping mapping) : value_(std::move(mapping)) {}
  Value(std::vector<Mapping> rows);
  /// Null when absent.
  template <class T>
  Value(const std::optional<T>& optional) {
    if (optional) *this = Value(*optional);
  }

  /// The text of a string value. Raises std::bad_variant_access for any other.
  explicit operator const std::string&() const { return std::get<std::string>(value_); }

  bool is_null() const { return std::holds_alternative<std::monostate>(value_); }

  /// The value as `T` (bool, std::int64_t, double, std::string, List, Mapping), or null.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }

  friend bool operator==(const Value&, const Value&) = default;

 private:
  friend class Writer;
  std::variant<std::monostate, bool, std::int64_t, double, std::string, List, Mapping> value_;
};

// Here, where Value is complete: clang looks into a vector's members as soon as they are used.
inline std::size_t Mapping::size() const { return entries_.size(); }
inline bool Mapping::empty() const { return entries_.empty(); }
inline std::vector<Mapping::Entry>::const_iterator Mapping::begin() const {
  return entries_.begin();
}
inline std::vector<Mapping::Entry>::const_iterator Mapping::end() const { return entries_.end(); }

/// The JSON text of a value on one line.
std::string json_text(const Value& value);
std::string json_text(const Mapping& mapping);
std::string json_text(const List& list);
void append_text(std::string& text, const Value& value);
void append_text(std::string& text, const Mapping& mapping);

/// The same with "," and ":" as separators.
std::string compact_text(const Mapping& mapping);

/// A string as JSON writes it, with its quotation marks.
void append_quoted(std::string& text, std::string_view string);

}  // namespace context_delta::json
