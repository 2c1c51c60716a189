#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_java(void);

/// Java up to 21.
namespace context_delta::indexer::java {

extern const Language LANGUAGE;

/// Classes, interfaces, enums, records, annotation types, their methods and constructors, and
/// every call, construction, method reference, import and use of a type.
Facts extract(TSNode root, std::string_view text);

/// Names are `package.Outer.Inner.method`, whatever folder the file stands in.
Resolution resolve(const File& file, const Facts& facts, World& world);

}  // namespace context_delta::indexer::java
