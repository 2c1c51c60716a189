#include <algorithm>
#include <array>

#include "indexer/languages/rust/library.h"

// What the library's types hold and its methods return.
namespace context_delta::indexer::rust {
namespace {

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& sorted) {
  return std::binary_search(sorted.begin(), sorted.end(), name);
}

/// Collections and iterators by what their first argument is: an element.
constexpr auto SEQUENCES = std::to_array<std::string_view>(
    {"ArrayVec", "BTreeSet", "BinaryHeap",   "Drain", "Empty",    "FusedIterator", "HashSet",
     "IndexSet", "IntoIter", "IntoIterator", "Iter",  "IterMut",  "Iterator",      "LinkedList",
     "Once",     "Option",   "Peekable",     "Rev",   "SmallVec", "Vec",           "VecDeque",
     "[]"});

constexpr auto MAPS = std::to_array<std::string_view>({"BTreeMap", "HashMap", "IndexMap"});

/// Adapters whose iterators yield what the iterator before yields.
constexpr auto SAME_ELEMENTS = std::to_array<std::string_view>(
    {"by_ref", "chain", "cloned", "copied", "cycle", "drain", "filter", "fuse", "inspect",
     "into_iter", "iter", "iter_mut", "peekable", "rev", "skip", "skip_while", "step_by", "take",
     "take_while"});

constexpr auto ELEMENT_OR_NONE = std::to_array<std::string_view>(
    {"back",     "back_mut", "find",       "first",     "first_mut", "front",  "front_mut",
     "get",      "get_mut",  "last",       "last_mut",  "max",       "max_by", "max_by_key",
     "min",      "min_by",   "min_by_key", "next",      "next_back", "nth",    "peek",
     "peek_mut", "pop",      "pop_back",   "pop_front", "reduce"});

/// Methods that return what they are called on, or a reference to it.
constexpr auto SAME_TYPE = std::to_array<std::string_view>(
    {"as_bytes_mut", "as_mut",     "as_mut_slice", "as_ref",           "as_slice",
     "borrow",       "borrow_mut", "clone",        "cloned",           "copied",
     "filter",       "inspect",    "inspect_err",  "into_boxed_slice", "or",
     "or_else",      "take",       "to_owned",     "to_vec",           "xor"});

/// Methods that return what is inside an Option or Result.
constexpr auto UNWRAPPING = std::to_array<std::string_view>(
    {"expect", "get_or_insert", "get_or_insert_with", "insert", "unwrap", "unwrap_or",
     "unwrap_or_default", "unwrap_or_else", "unwrap_unchecked"});

static_assert(std::is_sorted(SEQUENCES.begin(), SEQUENCES.end()));
static_assert(std::is_sorted(MAPS.begin(), MAPS.end()));
static_assert(std::is_sorted(SAME_ELEMENTS.begin(), SAME_ELEMENTS.end()));
static_assert(std::is_sorted(ELEMENT_OR_NONE.begin(), ELEMENT_OR_NONE.end()));
static_assert(std::is_sorted(SAME_TYPE.begin(), SAME_TYPE.end()));
static_assert(std::is_sorted(UNWRAPPING.begin(), UNWRAPPING.end()));

Type external(std::string_view name, std::vector<Type> arguments) {
  Type made;
  made.kind = Type::Kind::EXTERNAL;
  made.name = name;
  made.arguments = std::move(arguments);
  return made;
}

Type argument(const Type& type, std::size_t index) {
  return index < type.arguments.size() ? type.arguments[index] : Type{};
}

Type tuple(Type first, Type second) {
  Type made;
  made.kind = Type::Kind::TUPLE;
  made.arguments.push_back(std::move(first));
  made.arguments.push_back(std::move(second));
  return made;
}

Type result_of_wrapper(const Type& type, std::string_view method, const Type& given) {
  const bool option = type.name == "Option";
  if (is_one_of(method, UNWRAPPING)) return argument(type, 0);
  if (method == "ok") return external("Option", {argument(type, 0)});
  if (method == "err") return external("Option", {argument(type, 1)});
  if (method == "ok_or" || method == "ok_or_else") {
    return external("Result", {argument(type, 0), method == "ok_or" ? Type{} : given});
  }
  if (method == "map") {
    return option ? external("Option", {given}) : external("Result", {given, argument(type, 1)});
  }
  if (method == "map_err") return external("Result", {argument(type, 0), given});
  if (method == "and_then") return given;
  if (method == "transpose") {
    const Type inner = argument(type, 0);
    return option
               ? external("Result", {external("Option", {argument(inner, 0)}), argument(inner, 1)})
               : external("Option", {external("Result", {argument(inner, 0), argument(type, 1)})});
  }
  if (method == "flatten") return argument(type, 0);
  if (method == "as_deref" || method == "as_deref_mut") {
    const Type inner = argument(type, 0);
    return external(type.name, {is_pointer(inner.name) ? argument(inner, 0) : inner});
  }
  if (is_one_of(method, SAME_TYPE)) return type;
  if (method == "iter" || method == "iter_mut" || method == "into_iter") {
    return external("Iterator", {argument(type, 0)});
  }
  return {};
}

Type result_of_map(const Type& type, std::string_view method) {
  const Type value = argument(type, 1);
  if (method == "get" || method == "get_mut" || method == "remove" || method == "insert") {
    return external("Option", {value});
  }
  if (method == "values" || method == "values_mut" || method == "into_values") {
    return external("Iterator", {value});
  }
  if (method == "keys" || method == "into_keys") return external("Iterator", {argument(type, 0)});
  if (method == "iter" || method == "iter_mut" || method == "into_iter" || method == "drain") {
    return external("Iterator", {tuple(argument(type, 0), value)});
  }
  if (method == "entry") return external("Entry", {argument(type, 0), value});
  return method == "clone" ? type : Type{};
}

Type result_of_sequence(const Type& type, std::string_view method, const Type& given) {
  const Type inner = argument(type, 0);
  const bool iterates = type.name == "Iterator" || type.name == "Peekable";
  if (is_one_of(method, ELEMENT_OR_NONE)) return external("Option", {inner});
  if (method == "clone" || method == "as_slice" || method == "as_mut_slice" || method == "to_vec" ||
      method == "as_ref" || method == "as_mut" || method == "borrow" || method == "to_owned") {
    return type;
  }
  if (is_one_of(method, SAME_ELEMENTS)) return external("Iterator", {inner});
  if (method == "enumerate") {
    return external("Iterator", {tuple(external("usize", {}), inner)});
  }
  if (method == "windows" || method == "chunks" || method == "chunks_exact") {
    return external("Iterator", {external("[]", {inner})});
  }
  if (method == "zip") return external("Iterator", {tuple(inner, element_of(given))});
  if (method == "map" && iterates) return external("Iterator", {given});
  if (method == "filter_map" || method == "flat_map") {
    return external("Iterator", {element_of(given)});
  }
  if (method == "collect") return external("Vec", {inner});
  if (method == "remove" || method == "swap_remove") return inner;
  return {};
}

}  // namespace

Type element_of(const Type& type) {
  if (type.kind == Type::Kind::BOUNDED) {
    for (const Type& trait : type.arguments) {
      for (const auto& [name, bound] : trait.bindings) {
        if (name == "Item") return bound;
      }
    }
  }
  if (type.kind != Type::Kind::EXTERNAL) return {};
  if (is_pointer(type.name)) return element_of(argument(type, 0));
  for (const auto& [name, bound] : type.bindings) {
    if (name == "Item") return bound;
  }
  if (is_one_of(type.name, MAPS)) return tuple(argument(type, 0), argument(type, 1));
  if (is_one_of(type.name, SEQUENCES)) return argument(type, 0);
  return type.name == "Range" ? external("usize", {}) : Type{};
}

Type result_of(const Type& type, std::string_view method, const Type& given) {
  if (type.kind == Type::Kind::BOUNDED) {
    const Type inner = element_of(type);
    return inner.known() ? result_of_sequence(external("Iterator", {inner}), method, given)
                         : Type{};
  }
  if (type.kind != Type::Kind::EXTERNAL) return {};
  if (method == "collect" && given.known()) {
    Type made = given;
    const bool open = made.arguments.size() == 1 && !made.arguments[0].known();
    if (open && is_one_of(made.name, SEQUENCES)) made.arguments[0] = argument(type, 0);
    return made;
  }
  if (type.name == "Option" || type.name == "Result") {
    return result_of_wrapper(type, method, given);
  }
  if (is_one_of(type.name, MAPS)) return result_of_map(type, method);
  if (type.name == "Entry") {
    const bool value = method.starts_with("or_");
    return value ? argument(type, 1) : Type{};
  }
  if (type.name == "RefCell" || type.name == "Cell") {
    const bool inside = method == "borrow" || method == "borrow_mut" || method == "get" ||
                        method == "get_mut" || method == "take" || method == "into_inner";
    return inside ? argument(type, 0) : Type{};
  }
  if (type.name == "Mutex" || type.name == "RwLock") {
    const bool locked = method == "lock" || method == "read" || method == "write";
    return locked ? external("Result", {argument(type, 0)}) : Type{};
  }
  if (type.name == "str" || type.name == "String") {
    if (method == "as_bytes" || method == "into_bytes") {
      return external("[]", {external("u8", {})});
    }
    const bool text = method.starts_with("trim") || method.starts_with("to_") ||
                      method == "clone" || method == "as_str" || method == "into_owned";
    return text ? type : Type{};
  }
  if (is_pointer(type.name)) {
    const Type inner = argument(type, 0);
    if (inner.name == "RefCell" && method.starts_with("borrow")) return argument(inner, 0);
    return method == "clone" ? type : is_method_of_pointers(method) ? argument(type, 0) : Type{};
  }
  if (is_one_of(type.name, SEQUENCES)) return result_of_sequence(type, method, given);
  if (is_primitive(type.name)) {
    const bool same = method.starts_with("wrapping_") || method.starts_with("saturating_") ||
                      method == "min" || method == "max" || method == "abs" || method == "clone";
    if (same) return type;
    if (method.starts_with("checked_")) return external("Option", {type});
  }
  return {};
}

Type closure_argument(const Type& type, std::string_view method) {
  if (type.kind == Type::Kind::EXTERNAL) {
    if (type.name == "Option" || type.name == "Result") {
      const bool error = method == "map_err" || method == "or_else" || method == "unwrap_or_else" ||
                         method == "inspect_err";
      return argument(type, error ? 1 : 0);
    }
    if (is_one_of(type.name, MAPS)) return {};
    if (type.name == "Entry") return argument(type, 1);
  }
  return element_of(type);
}

Type unwrapped(const Type& type, std::string_view variant) {
  if (type.kind != Type::Kind::EXTERNAL) return {};
  if (is_pointer(type.name)) return unwrapped(argument(type, 0), variant);
  if (type.name != "Option" && type.name != "Result" && type.name != "Poll") return {};
  return argument(type, variant == "Err" ? 1 : 0);
}

}  // namespace context_delta::indexer::rust
