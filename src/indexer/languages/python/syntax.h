#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/kit/expressions.h"
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

/// The expression that a node is: names, attributes, calls and subscripts, literals; `await` and
/// parentheses are left out, arguments are not kept.
ExpressionIndex expression_of(TSNode node, std::string_view text, kit::ExpressionTable& table);

/// `a.b.c` as the same expression would be.
ExpressionIndex dotted_expression(std::string_view dotted, kit::ExpressionTable& table);

/// The text of an identifier or of attributes of one: `a.b.c`; empty for anything else.
std::string dotted_name(TSNode node, std::string_view text);

/// The names that an assignment target binds; attributes and subscripts are left out.
std::vector<TSNode> bound_names(TSNode target);

}  // namespace context_delta::indexer::python
