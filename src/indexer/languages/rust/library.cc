#include "indexer/languages/rust/library.h"

#include <algorithm>
#include <array>

#include "indexer/languages/kit/words.h"
#include "indexer/languages/rust/tables.h"

namespace context_delta::indexer::rust {
namespace {

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& sorted) {
  return std::binary_search(sorted.begin(), sorted.end(), name);
}

constexpr auto CRATES =
    std::to_array<std::string_view>({"alloc", "core", "proc_macro", "std", "test"});

constexpr auto POINTERS = std::to_array<std::string_view>(
    {"Arc", "Box", "Cow", "LazyCell", "LazyLock", "ManuallyDrop", "MutexGuard", "Pin", "Rc", "Ref",
     "RefMut", "RwLockReadGuard", "RwLockWriteGuard"});

constexpr auto POINTER_METHODS = std::to_array<std::string_view>(
    {"as_mut",    "as_ref",      "borrow", "borrow_mut", "clone",     "cmp",     "deref",
     "deref_mut", "eq",          "fmt",    "get_mut",    "hash",      "into",    "into_owned",
     "ne",        "partial_cmp", "to_mut", "to_owned",   "to_string", "try_into"});

static_assert(std::is_sorted(CRATES.begin(), CRATES.end()));
static_assert(std::is_sorted(POINTERS.begin(), POINTERS.end()));
static_assert(std::is_sorted(POINTER_METHODS.begin(), POINTER_METHODS.end()));

/// `checked_add` and its like, which all numbers have.
bool is_arithmetic(std::string_view name) {
  constexpr auto OPERATIONS = std::to_array<std::string_view>(
      {"abs", "add", "div", "mul", "neg", "pow", "rem", "shl", "shr", "sub"});
  const std::size_t line = name.find('_');
  if (line == std::string_view::npos || !is_one_of(name.substr(line + 1), OPERATIONS)) return false;
  const std::string_view family = name.substr(0, line);
  return family == "checked" || family == "wrapping" || family == "saturating" ||
         family == "overflowing";
}

}  // namespace

bool is_standard_crate(std::string_view name) { return is_one_of(name, CRATES); }
bool is_in_prelude(std::string_view name) { return kit::has_word(PRELUDE, name); }
bool is_primitive(std::string_view name) { return kit::has_word(PRIMITIVES, name); }
bool is_common_method(std::string_view name) {
  return kit::has_word(COMMON_METHODS, name) || is_arithmetic(name);
}
bool is_pointer(std::string_view type) { return is_one_of(type, POINTERS); }
bool is_method_of_pointers(std::string_view name) { return is_one_of(name, POINTER_METHODS); }

}  // namespace context_delta::indexer::rust
