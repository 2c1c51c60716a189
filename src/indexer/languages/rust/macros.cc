#include <string>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/extractor.h"

// What is written inside the arguments of a macro is tokens, not a tree: names before parentheses
// are taken for calls that nothing proves.
namespace context_delta::indexer::rust {

using kit::child;
using kit::first_line;

void Extractor::enter_macro(TSNode node) {
  const TSNode macro = child(node, rust_.field.macro);
  consumed_ = macro.id;
  const std::string path = path_text(macro);
  const std::size_t colons = path.rfind("::");
  const bool scoped = colons != std::string::npos;
  builder_.refer(scoped ? path.substr(colons + 2) : path,
                 scoped ? path.substr(0, colons + 2) + "!" : "!", Role::CALL, first_line(macro));
}

void Extractor::scan_tokens(TSNode tree) {
  std::string chain;  // the expression before
  std::string name;   // of a chain that ends with a name: that name, not in `chain` yet
  std::string joint;  // between them: `.`, `::` or nothing
  std::int32_t line = 0;
  const auto fold = [&] {
    if (name.empty()) return;
    const std::string_view variable = joint.empty() ? locals_.find(name) : std::string_view();
    chain += joint + (variable.empty() ? name : std::string(variable));
    if (chain.size() > kit::LONGEST_EXPRESSION) chain = "?";
    name.clear();
    joint.clear();
  };
  kit::Cursor cursor(tree);
  if (!ts_tree_cursor_goto_first_child(cursor.get())) return;
  do {
    const TSNode token = ts_tree_cursor_current_node(cursor.get());
    const std::string_view text = text_of(token);
    const Node kind = rust_.kind(token);
    if (kind == Node::IDENTIFIER || kind == Node::SELF || kind == Node::CRATE ||
        kind == Node::SUPER) {
      if (!name.empty() || joint.empty()) chain.clear();
      name = kit::one_line(text, kit::LONGEST_EXPRESSION);
      line = first_line(token);
    } else if (kind == Node::TOKEN_TREE && text.starts_with('(') && !name.empty()) {
      const bool is_local = joint.empty() && !locals_.find(name).empty();
      Reference& made = builder_.refer(name,
                                       joint == "::" ? chain + "::"
                                       : is_local    ? "let"
                                                     : chain,
                                       Role::CALL, line);
      made.traits |= FROM_MACRO;
      fold();
      chain += "()";
    } else if (kind == Node::TOKEN_TREE && text.starts_with('[') &&
               (!name.empty() || !chain.empty())) {
      fold();
      chain += "[]";
    } else if (text == "." || text == "::") {
      fold();
      joint = chain.empty() ? "" : std::string(text);
    } else if (text == "?" && (!name.empty() || !chain.empty())) {
      fold();
      chain += "?";
    } else {
      name.clear();
      chain.clear();
      joint.clear();
    }
  } while (ts_tree_cursor_goto_next_sibling(cursor.get()));
}

}  // namespace context_delta::indexer::rust
