#include "indexer/languages/rust/library.h"

#include <algorithm>
#include <array>

namespace context_delta::indexer::rust {
namespace {

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& sorted) {
  return std::binary_search(sorted.begin(), sorted.end(), name);
}

constexpr auto CRATES =
    std::to_array<std::string_view>({"alloc", "core", "proc_macro", "std", "test"});

constexpr auto PRELUDE = std::to_array<std::string_view>({"AsMut",
                                                          "AsRef",
                                                          "Box",
                                                          "Clone",
                                                          "Copy",
                                                          "Debug",
                                                          "Default",
                                                          "DoubleEndedIterator",
                                                          "Drop",
                                                          "Eq",
                                                          "Err",
                                                          "ExactSizeIterator",
                                                          "Extend",
                                                          "Fn",
                                                          "FnMut",
                                                          "FnOnce",
                                                          "From",
                                                          "FromIterator",
                                                          "Hash",
                                                          "Into",
                                                          "IntoIterator",
                                                          "Iterator",
                                                          "None",
                                                          "Ok",
                                                          "Option",
                                                          "Ord",
                                                          "PartialEq",
                                                          "PartialOrd",
                                                          "Result",
                                                          "Send",
                                                          "Sized",
                                                          "Some",
                                                          "String",
                                                          "Sync",
                                                          "ToOwned",
                                                          "ToString",
                                                          "TryFrom",
                                                          "TryInto",
                                                          "Unpin",
                                                          "Vec",
                                                          "assert",
                                                          "assert_eq",
                                                          "assert_ne",
                                                          "cfg",
                                                          "column",
                                                          "compile_error",
                                                          "concat",
                                                          "dbg",
                                                          "debug_assert",
                                                          "debug_assert_eq",
                                                          "debug_assert_ne",
                                                          "drop",
                                                          "env",
                                                          "eprint",
                                                          "eprintln",
                                                          "file",
                                                          "format",
                                                          "format_args",
                                                          "include",
                                                          "include_bytes",
                                                          "include_str",
                                                          "line",
                                                          "matches",
                                                          "module_path",
                                                          "option_env",
                                                          "panic",
                                                          "print",
                                                          "println",
                                                          "stringify",
                                                          "thread_local",
                                                          "todo",
                                                          "unimplemented",
                                                          "unreachable",
                                                          "vec",
                                                          "write",
                                                          "writeln"});

constexpr auto PRIMITIVES = std::to_array<std::string_view>(
    {"bool", "char", "f32", "f64", "i128", "i16", "i32", "i64", "i8", "isize", "str", "u128", "u16",
     "u32", "u64", "u8", "usize"});

/// Methods of the library's types and traits that programs call most.
constexpr auto COMMON_METHODS = std::to_array<std::string_view>({"abs",
                                                                 "all",
                                                                 "and_then",
                                                                 "any",
                                                                 "append",
                                                                 "as_bytes",
                                                                 "as_deref",
                                                                 "as_mut",
                                                                 "as_ptr",
                                                                 "as_ref",
                                                                 "as_slice",
                                                                 "as_str",
                                                                 "borrow",
                                                                 "borrow_mut",
                                                                 "by_ref",
                                                                 "bytes",
                                                                 "chain",
                                                                 "chars",
                                                                 "clamp",
                                                                 "clear",
                                                                 "clone",
                                                                 "cloned",
                                                                 "cmp",
                                                                 "collect",
                                                                 "contains",
                                                                 "contains_key",
                                                                 "copied",
                                                                 "count",
                                                                 "dedup",
                                                                 "default",
                                                                 "deref",
                                                                 "deref_mut",
                                                                 "drain",
                                                                 "elapsed",
                                                                 "ends_with",
                                                                 "entry",
                                                                 "enumerate",
                                                                 "eq",
                                                                 "err",
                                                                 "expect",
                                                                 "extend",
                                                                 "extend_from_slice",
                                                                 "field",
                                                                 "filter",
                                                                 "filter_map",
                                                                 "find",
                                                                 "find_map",
                                                                 "finish",
                                                                 "first",
                                                                 "flat_map",
                                                                 "flatten",
                                                                 "flush",
                                                                 "fmt",
                                                                 "fold",
                                                                 "for_each",
                                                                 "from",
                                                                 "get",
                                                                 "get_mut",
                                                                 "get_or_insert_with",
                                                                 "hash",
                                                                 "index",
                                                                 "insert",
                                                                 "into",
                                                                 "into_inner",
                                                                 "into_iter",
                                                                 "is_ascii",
                                                                 "is_empty",
                                                                 "is_err",
                                                                 "is_none",
                                                                 "is_ok",
                                                                 "is_some",
                                                                 "iter",
                                                                 "iter_mut",
                                                                 "join",
                                                                 "keys",
                                                                 "last",
                                                                 "last_mut",
                                                                 "len",
                                                                 "lines",
                                                                 "lock",
                                                                 "map",
                                                                 "map_err",
                                                                 "max",
                                                                 "max_by_key",
                                                                 "min",
                                                                 "min_by_key",
                                                                 "ne",
                                                                 "next",
                                                                 "next_back",
                                                                 "ok",
                                                                 "ok_or",
                                                                 "ok_or_else",
                                                                 "or",
                                                                 "or_else",
                                                                 "or_insert",
                                                                 "or_insert_with",
                                                                 "parse",
                                                                 "partial_cmp",
                                                                 "peek",
                                                                 "peekable",
                                                                 "pop",
                                                                 "position",
                                                                 "push",
                                                                 "push_str",
                                                                 "read",
                                                                 "remove",
                                                                 "replace",
                                                                 "reserve",
                                                                 "resize",
                                                                 "rev",
                                                                 "send",
                                                                 "skip",
                                                                 "sort",
                                                                 "sort_by",
                                                                 "sort_by_key",
                                                                 "split",
                                                                 "split_at",
                                                                 "starts_with",
                                                                 "step_by",
                                                                 "sum",
                                                                 "swap",
                                                                 "take",
                                                                 "to_owned",
                                                                 "to_string",
                                                                 "to_vec",
                                                                 "trim",
                                                                 "truncate",
                                                                 "try_from",
                                                                 "try_into",
                                                                 "unwrap",
                                                                 "unwrap_err",
                                                                 "unwrap_or",
                                                                 "unwrap_or_default",
                                                                 "unwrap_or_else",
                                                                 "values",
                                                                 "with_capacity",
                                                                 "wrapping_add",
                                                                 "wrapping_mul",
                                                                 "wrapping_sub",
                                                                 "write",
                                                                 "write_all",
                                                                 "write_str",
                                                                 "zip"});

constexpr auto POINTERS = std::to_array<std::string_view>(
    {"Arc", "Box", "Cow", "LazyCell", "LazyLock", "ManuallyDrop", "MutexGuard", "Pin", "Rc", "Ref",
     "RefMut", "RwLockReadGuard", "RwLockWriteGuard"});

constexpr auto POINTER_METHODS = std::to_array<std::string_view>(
    {"as_mut",    "as_ref",      "borrow", "borrow_mut", "clone",     "cmp",     "deref",
     "deref_mut", "eq",          "fmt",    "get_mut",    "hash",      "into",    "into_owned",
     "ne",        "partial_cmp", "to_mut", "to_owned",   "to_string", "try_into"});

static_assert(std::is_sorted(CRATES.begin(), CRATES.end()));
static_assert(std::is_sorted(PRELUDE.begin(), PRELUDE.end()));
static_assert(std::is_sorted(PRIMITIVES.begin(), PRIMITIVES.end()));
static_assert(std::is_sorted(COMMON_METHODS.begin(), COMMON_METHODS.end()));
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
bool is_in_prelude(std::string_view name) { return is_one_of(name, PRELUDE); }
bool is_primitive(std::string_view name) { return is_one_of(name, PRIMITIVES); }
bool is_common_method(std::string_view name) {
  return is_one_of(name, COMMON_METHODS) || is_arithmetic(name);
}
bool is_pointer(std::string_view type) { return is_one_of(type, POINTERS); }
bool is_method_of_pointers(std::string_view name) { return is_one_of(name, POINTER_METHODS); }

}  // namespace context_delta::indexer::rust
