#include "indexer/languages/go/builtins.h"

#include <algorithm>
#include <array>

namespace context_delta::indexer::go {
namespace {

constexpr auto PREDECLARED = std::to_array<std::string_view>({
    "any",   "append",  "bool",    "byte",   "cap",   "comparable", "complex128", "complex64",
    "error", "float32", "float64", "int",    "int16", "int32",      "int64",      "int8",
    "len",   "make",    "new",     "nil",    "panic", "recover",    "rune",       "string",
    "uint",  "uint16",  "uint32",  "uint64", "uint8", "uintptr",
});

constexpr auto COMMON_METHODS = std::to_array<std::string_view>({
    "Add",    "Close",  "Done",  "Error", "Errorf", "Fatal",     "Fatalf",      "Format", "Get",
    "Helper", "Len",    "Less",  "Lock",  "Log",    "Logf",      "Name",        "Print",  "Printf",
    "Read",   "Reset",  "Run",   "Set",   "Size",   "Skip",      "String",      "Swap",   "Type",
    "Unlock", "Unwrap", "Value", "Wait",  "Write",  "WriteByte", "WriteString",
});

template <class Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

bool is_predeclared(std::string_view name) { return contains(PREDECLARED, name); }

bool is_common_method(std::string_view name) { return contains(COMMON_METHODS, name); }

}  // namespace context_delta::indexer::go
