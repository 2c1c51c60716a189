#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/kit/nodes.h"
#include "indexer/languages/python/tables.h"

/// The nodes of the Python grammar that extraction looks at.
namespace context_delta::indexer::python {

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// An expression as receivers are written: `self.store`, `Foo()`, `a.b[].c`. Literals stand as
/// calls of their types ("str()"), `await` is left out, anything else is "?".
std::string expression_text(TSNode node, std::string_view text);

/// The names that an assignment target binds; attributes and subscripts are left out.
std::vector<TSNode> bound_names(TSNode target);

}  // namespace context_delta::indexer::python
