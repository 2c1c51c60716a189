#pragma once

#include "python/object.h"
#include "python/value.h"

namespace context_delta::python {

/// The text that `json.dumps(value, ensure_ascii=False)` gives, as a Python string: packs are
/// priced on it. Whatever is not made of plain dicts with string keys, lists, tuples, strings,
/// numbers of at most 64 bits, booleans and None is left to the host's serialiser, which also
/// raises what it raises for values of no JSON type.
Object json_text(const Object& value);
Object json_text(const Row& row);

}  // namespace context_delta::python
