#include "utils/json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace context_delta::json {
namespace {

void append_integer(std::string& text, std::int64_t number) {
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  text.append(digits.data(), end);
}

/// The shortest digits that read back as the same double, with the point where `exponent` of the
/// scientific form puts it: positional from 1e-4 up to 1e16, exponent form outside.
void append_double(std::string& text, double number) {
  if (std::isnan(number)) {
    text += "NaN";
    return;
  }
  if (std::signbit(number)) text += '-';
  if (std::isinf(number)) {
    text += "Infinity";
    return;
  }
  std::array<char, 32> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(number),
                                 std::chars_format::scientific)
                       .ptr;
  const std::string_view written(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  const std::size_t e = written.find('e');
  int exponent = 0;
  std::from_chars(buffer.data() + e + 1 + (written[e + 1] == '+' ? 1 : 0), end, exponent);
  std::string digits(1, written[0]);
  if (e > 2) digits += written.substr(2, e - 2);

  if (exponent < -4 || exponent >= 16) {
    text += digits[0];
    if (digits.size() > 1) text.append(".").append(digits, 1);
    text.append(written.substr(e));
    return;
  }
  if (exponent < 0) {
    text.append("0.").append(static_cast<std::size_t>(-exponent - 1), '0').append(digits);
    return;
  }
  const std::size_t whole = static_cast<std::size_t>(exponent) + 1;
  if (digits.size() <= whole) digits.resize(whole + 1, '0');
  text.append(digits, 0, whole).append(".").append(digits, whole);
}

}  // namespace

/// What stands between the items of a list or mapping, and between a key and its value.
struct Separators {
  std::string_view item;
  std::string_view key;
};

constexpr Separators PRICED{", ", ": "};
constexpr Separators COMPACT{",", ":"};

class Writer {
 public:
  Writer(std::string& text, const Separators& separators) : text_(text), separators_(separators) {}

  void write(const Value& value) const { std::visit(*this, value.value_); }

  void operator()(std::monostate) const { text_ += "null"; }
  void operator()(bool truth) const { text_ += truth ? "true" : "false"; }
  void operator()(std::int64_t number) const { append_integer(text_, number); }
  void operator()(double number) const { append_double(text_, number); }
  void operator()(const std::string& string) const { append_quoted(text_, string); }

  void operator()(const List& list) const {
    text_ += '[';
    bool first = true;
    for (const Value& item : list) {
      if (!std::exchange(first, false)) text_ += separators_.item;
      write(item);
    }
    text_ += ']';
  }

  void operator()(const Mapping& mapping) const {
    text_ += '{';
    bool first = true;
    for (const auto& [key, value] : mapping) {
      if (!std::exchange(first, false)) text_ += separators_.item;
      append_quoted(text_, key);
      text_ += separators_.key;
      write(value);
    }
    text_ += '}';
  }

 private:
  std::string& text_;
  const Separators& separators_;
};

Mapping::Mapping(std::initializer_list<Entry> entries) {
  for (const Entry& entry : entries) set(entry.first, entry.second);
}

void Mapping::set(std::string_view key, Value value) {
  for (Entry& entry : entries_) {
    if (entry.first == key) {
      entry.second = std::move(value);
      return;
    }
  }
  entries_.emplace_back(key, std::move(value));
}

const Value* Mapping::find(std::string_view key) const {
  const auto found =
      std::find_if(begin(), end(), [&](const Entry& entry) { return entry.first == key; });
  return found == end() ? nullptr : &found->second;
}

const Value& Mapping::at(std::string_view key) const {
  if (const Value* value = find(key)) return *value;
  throw std::out_of_range("no key '" + std::string(key) + "'");
}

bool operator==(const Mapping& a, const Mapping& b) { return a.entries_ == b.entries_; }

Value::Value(std::vector<Mapping> rows)
    : value_(List(std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()))) {}

void append_quoted(std::string& text, std::string_view string) {
  constexpr std::string_view HEX = "0123456789abcdef";
  text += '"';
  std::size_t plain = 0;  // start of the run that is written as it is
  for (std::size_t i = 0; i < string.size(); ++i) {
    const auto byte = static_cast<unsigned char>(string[i]);
    if (byte >= 0x20 && byte != '"' && byte != '\\') continue;
    text.append(string, plain, i - plain);
    plain = i + 1;
    text += '\\';
    switch (byte) {
      case '"':
      case '\\':
        text += string[i];
        break;
      case '\b':
        text += 'b';
        break;
      case '\f':
        text += 'f';
        break;
      case '\n':
        text += 'n';
        break;
      case '\r':
        text += 'r';
        break;
      case '\t':
        text += 't';
        break;
      default:
        text.append("u00").append(1, HEX[byte >> 4]).append(1, HEX[byte & 0xF]);
    }
  }
  text.append(string, plain).append("\"");
}

void append_text(std::string& text, const Mapping& mapping) { Writer(text, PRICED)(mapping); }

void append_text(std::string& text, const Value& value) { Writer(text, PRICED).write(value); }

std::string compact_text(const Mapping& mapping) {
  std::string text;
  Writer(text, COMPACT)(mapping);
  return text;
}

std::string json_text(const Value& value) {
  std::string text;
  append_text(text, value);
  return text;
}

std::string json_text(const List& list) {
  std::string text;
  Writer(text, PRICED)(list);
  return text;
}

std::string json_text(const Mapping& mapping) {
  std::string text;
  append_text(text, mapping);
  return text;
}

}  // namespace context_delta::json
