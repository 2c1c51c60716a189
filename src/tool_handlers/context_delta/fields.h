#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

/// Reading the values that the services hand over, whatever kind they are: a native record is a
/// struct with public members; a record of a host answers `attribute<name>()`, at the moment it is
/// asked. Found by argument-dependent lookup, so a services kind may add overloads for its values.
namespace context_delta {

/// The name of a field, as a template argument.
template <std::size_t length>
struct FieldName {
  char text[length];
  constexpr FieldName(const char (&name)[length]) { std::copy_n(name, length, text); }
};

/// One reader per field of the contract's records: field::path(change) is `change.path`.
namespace field {

#define CONTEXT_DELTA_FIELD(name)                                         \
  inline constexpr auto name = [](const auto& record) -> decltype(auto) { \
    if constexpr (requires { record.name; }) {                            \
      return (record.name);                                               \
    } else {                                                              \
      return record.template attribute<#name>();                          \
    }                                                                     \
  }

// BranchChanges
CONTEXT_DELTA_FIELD(files);
CONTEXT_DELTA_FIELD(base_branch);
CONTEXT_DELTA_FIELD(head_branch);
CONTEXT_DELTA_FIELD(commit_count);
CONTEXT_DELTA_FIELD(base_commit);
CONTEXT_DELTA_FIELD(head_commit);
CONTEXT_DELTA_FIELD(note);
// FileChange
CONTEXT_DELTA_FIELD(path);
CONTEXT_DELTA_FIELD(status);
CONTEXT_DELTA_FIELD(additions);
CONTEXT_DELTA_FIELD(deletions);
// LineSpan
CONTEXT_DELTA_FIELD(start);
CONTEXT_DELTA_FIELD(end);
// Repository
CONTEXT_DELTA_FIELD(db);
// FileImpact
CONTEXT_DELTA_FIELD(references);
CONTEXT_DELTA_FIELD(symbols);
CONTEXT_DELTA_FIELD(language);
// SymbolOnLines and Caller
CONTEXT_DELTA_FIELD(id);
CONTEXT_DELTA_FIELD(start_line);
CONTEXT_DELTA_FIELD(end_line);
CONTEXT_DELTA_FIELD(fqn);
CONTEXT_DELTA_FIELD(name);
CONTEXT_DELTA_FIELD(kind);
CONTEXT_DELTA_FIELD(signature);
CONTEXT_DELTA_FIELD(of);
CONTEXT_DELTA_FIELD(total);
CONTEXT_DELTA_FIELD(line);
CONTEXT_DELTA_FIELD(call_line);

#undef CONTEXT_DELTA_FIELD

}  // namespace field

/// Whether a value counts as true: absent, zero and empty values do not.
template <class Value>
bool truth(const Value& value) {
  if constexpr (requires { value.has_value(); }) {
    return value.has_value() && truth(*value);
  } else if constexpr (requires { value.empty(); }) {
    return !value.empty();
  } else {
    return static_cast<bool>(value);
  }
}

/// A text as it stands inside a message.
inline const std::string& plain_text(const std::string& text) { return text; }
inline const std::string& plain_text(const std::optional<std::string>& text) { return *text; }

/// The text of an error, without its type.
template <class Error>
std::string error_text(const Error& error) {
  return error.what();
}

/// Ends the look-up of a key that must be there. Raises std::out_of_range.
template <class Key>
[[noreturn]] void missing_key(const Key& key) {
  std::ostringstream text;
  if constexpr (requires { text << key; }) {
    text << "missing key: " << key;
  } else {
    text << "missing key";
  }
  throw std::out_of_range(text.str());
}

/// The entry for a key, or null: a pointer, or what the mapping's own `get` returns.
template <class Map, class Key>
auto lookup(const Map& map, const Key& key) {
  if constexpr (requires { map.get(key); }) {
    return map.get(key);
  } else {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : std::addressof(found->second);
  }
}

/// The entry for a key that must be there; missing_key() otherwise.
template <class Map, class Key>
const auto& entry(const Map& map, const Key& key) {
  const auto found = map.find(key);
  if (found == map.end()) missing_key(key);
  return found->second;
}

}  // namespace context_delta
