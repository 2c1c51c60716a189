#include "indexer/model/expression.h"

namespace context_delta::indexer {
namespace {

class Description {
 public:
  explicit Description(const std::vector<Expression>& expressions) : expressions_(expressions) {}

  std::string of(ExpressionIndex index) const {
    if (index == NO_EXPRESSION) return "";
    const Expression& each = expressions_[static_cast<std::size_t>(index)];
    const std::string number = std::to_string(each.number);
    switch (each.kind) {
      case ExpressionKind::UNKNOWN:
        return "?";
      case ExpressionKind::NAME:
        return each.name;
      case ExpressionKind::LOCAL:
        return each.name + "@" + number;
      case ExpressionKind::SELF:
        return "self";
      case ExpressionKind::SUPER:
        return "super";
      case ExpressionKind::MEMBER:
        return first(each) + "." + each.name;
      case ExpressionKind::SCOPED:
        return first(each) + "::" + each.name;
      case ExpressionKind::CALL:
        return first(each) + "(" + list(each, 1) + ")";
      case ExpressionKind::CONSTRUCT:
        return "new " + first(each) + "(" + list(each, 1) + ")";
      case ExpressionKind::INDEX:
        return first(each) + "[" + list(each, 1) + "]";
      case ExpressionKind::SLICE:
        return first(each) + "[:]";
      case ExpressionKind::LITERAL:
        return "\"" + each.name + "\"";
      case ExpressionKind::NONE:
        return "none";
      case ExpressionKind::TYPED:
        return "<" + each.name + ">" + list(each, 0);
      case ExpressionKind::EXACT:
        return "<=" + each.name + ">" + list(each, 0);
      case ExpressionKind::FUNCTION:
        return "->" + number + each.name + "{" + list(each, 0) + "}";
      case ExpressionKind::PARAMETER:
        return first(each) + "^" + number;
      case ExpressionKind::DEFINITION:
        return "=" + number;
      case ExpressionKind::OBJECT:
        return "{" + number + each.name + "}";
      case ExpressionKind::TUPLE:
        return "(" + list(each, 0) + ")";
      case ExpressionKind::ITEM:
        return first(each) + "#" + number + each.name;
      case ExpressionKind::ELEMENT:
        return first(each) + "%";
      case ExpressionKind::UNWRAPPED:
        return first(each) + "!" + each.name;
      case ExpressionKind::MATCHED:
        return first(each) + "~" + each.name + "." + number;
      case ExpressionKind::OPERATION:
        return each.name + "(" + list(each, 0) + ")";
      case ExpressionKind::CHOICE:
        return "?(" + list(each, 0) + ")";
      case ExpressionKind::MODULE:
        return "module " + each.name;
      case ExpressionKind::REFERENCE:
        return first(each) + "::&" + each.name;
      case ExpressionKind::SPREAD:
        return "...";
      case ExpressionKind::NEVER:
        return "!";
    }
    return "";
  }

 private:
  std::string first(const Expression& each) const {
    return each.operands.empty() ? std::string() : of(each.operands.front());
  }
  std::string list(const Expression& each, std::size_t from) const {
    std::string text;
    for (std::size_t i = from; i < each.operands.size(); ++i) {
      text += (i == from ? "" : ",") + of(each.operands[i]);
    }
    return text;
  }
  const std::vector<Expression>& expressions_;
};

}  // namespace

std::string describe(const std::vector<Expression>& expressions, ExpressionIndex index) {
  return Description(expressions).of(index);
}

}  // namespace context_delta::indexer
