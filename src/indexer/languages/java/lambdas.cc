#include <charconv>

#include "indexer/languages/java/library.h"
#include "indexer/languages/java/values.h"
#include "indexer/languages/kit/scopes.h"

namespace context_delta::indexer::java {
namespace {

std::size_t take_number(std::string_view& text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (!text.empty()) text.remove_prefix(1);
  return error == std::errc() ? number : 0;
}

}  // namespace

/// `text` is what follows `^`: the lambda's place in the call, and the call.
Type Values::lambda_parameter(DefinitionIndex scope, std::string_view text, int depth) {
  const std::size_t argument = take_number(text);
  const std::size_t position = take_number(text);
  const std::string_view name = take_name(text);
  if (!text.starts_with('(')) return {};
  const std::string_view values = take_brackets(text);
  const Arguments passed = arguments(scope, values, count_of(values), depth);
  const Callee callee =
      text.empty() ? bare(scope, name, passed) : on(of(scope, text, depth), name, passed);
  if (callee.choice.fitting.empty()) {
    return callee.receiver.kind == Type::Kind::EXTERNAL
               ? library_function_parameter(callee, name, position)
               : Type{};
  }
  Type made;
  for (const Method& method : callee.choice.fitting) {
    if (argument >= method.parameters.size()) return {};
    const Type given =
        inferred(function_parameter(method.parameters[argument], position), method, passed);
    const bool differs = made.kind != Type::Kind::UNKNOWN && !same_type(made, given);
    if (differs || given.kind == Type::Kind::UNKNOWN) return {};
    made = given;
  }
  // What the receiver's type arguments would say is not written.
  const bool open = made.kind == Type::Kind::VARIABLE && !callee.receiver.is_this;
  return open ? Type{} : made;
}

/// The type of a parameter of a functional interface's method.
Type Values::function_parameter(const Type& function, std::size_t position) {
  if (function.dimensions > 0) return {};
  if (function.kind == Type::Kind::CLASS) {
    const Definition* method = abstract_method(names_, function);
    if (method == nullptr) return {};
    for (const Method& each : methods_of(names_, function, method->name).all) {
      const Definition& found = names_.definition(*each.file, each.definition);
      const bool is_it = (found.traits & DECLARATION) != 0 && position < each.parameters.size();
      if (is_it) return each.parameters[position];
    }
    return {};
  }
  if (function.kind != Type::Kind::EXTERNAL || function.arguments.empty()) return {};
  const LibraryType* listed = library_type_of(function.name);
  if (listed == nullptr || listed->function.empty()) return {};
  const bool same = listed->name == "Comparator" || listed->name == "BinaryOperator";
  const std::size_t index = same ? 0 : position;
  const bool gives = listed->function.ends_with('r') && index + 1 == function.arguments.size() &&
                     listed->name.ends_with("Function") && !listed->name.starts_with("To");
  return index < function.arguments.size() && !gives ? function.arguments[index] : Type{};
}

}  // namespace context_delta::indexer::java
