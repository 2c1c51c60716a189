#pragma once

#include <string_view>

#include "indexer/languages/ecmascript/syntax.h"
#include "indexer/model/facts.h"

namespace context_delta::indexer::ecmascript {

/// The facts of a text in any language of the family: functions, classes, methods, also those of
/// object literals, variables of the module, types, and every call, import and export.
///
/// What a module exports are bindings and imports whose names begin with "export ": `export a`,
/// `export default`, `export =` for `module.exports`, `export *`. Members of an object literal are
/// bindings named `{7:3}.member`, what is added to a variable later `variable.member`, and types of
/// documentation comments and type parameters `type Name`. The result of a function without a
/// written type is `=` and the only expression that it returns.
Facts extract(const Syntax& syntax, TSNode root, std::string_view text);

}  // namespace context_delta::indexer::ecmascript
