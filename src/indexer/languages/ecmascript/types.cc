#include <algorithm>
#include <array>

#include "indexer/languages/ecmascript/names.h"
#include "indexer/languages/ecmascript/values.h"
#include "indexer/languages/kit/text.h"

/// Types as TypeScript and documentation comments write them.
namespace context_delta::indexer::ecmascript {
namespace {

using kit::trimmed;

/// The parts of a type between separators that stand in no brackets.
std::vector<std::string_view> parts_of(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  int brackets = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (byte == '[' || byte == '(' || byte == '{' || byte == '<') ++brackets;
    const bool arrow = byte == '>' && i > 0 && text[i - 1] == '=';
    if (byte == ']' || byte == ')' || byte == '}' || (byte == '>' && !arrow)) --brackets;
    if (byte != separator || brackets != 0) continue;
    parts.push_back(trimmed(text.substr(start, i - start)));
    start = i + 1;
  }
  parts.push_back(trimmed(text.substr(start)));
  std::erase_if(parts, [](std::string_view part) { return part.empty(); });
  return parts;
}

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 7> NOTHING = {"null",  "undefined", "void", "false",
                                                     "never", "true",      "''"};
constexpr std::array<std::string_view, 8> PRIMITIVE = {"string", "number", "boolean", "bigint",
                                                       "symbol", "String", "Number",  "Boolean"};
constexpr std::array<std::string_view, 8> WRAPPERS = {"Readonly",    "Partial",     "Required",
                                                      "NonNullable", "Promise",     "PromiseLike",
                                                      "Awaited",     "DeepReadonly"};
constexpr std::array<std::string_view, 4> PARTS = {"Pick", "Omit", "Extract", "Exclude"};
constexpr std::array<std::string_view, 11> SEQUENCES = {
    "Array",    "ReadonlyArray",    "Set",           "ReadonlySet", "WeakSet",       "Iterable",
    "Iterator", "IterableIterator", "AsyncIterable", "Generator",   "AsyncGenerator"};
constexpr std::array<std::string_view, 4> MAPPINGS = {"Map", "ReadonlyMap", "WeakMap", "Record"};

bool is_wrapped(std::string_view text) {
  return text.size() > 2 && text.front() == '(' && end_of_brackets(text) == text.size();
}

std::string_view without_parentheses(std::string_view text) {
  text = trimmed(text);
  while (is_wrapped(text)) text = trimmed(text.substr(1, text.size() - 2));
  return text;
}

/// Names joined by dots.
bool is_path(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char byte) { return is_name_byte(byte) || byte == '.'; });
}

/// Types of functions and objects that are written out.
bool is_anonymous(std::string_view text) {
  const bool function =
      text.find("=>") != std::string_view::npos &&
      (text.starts_with('(') || text.starts_with('<') || text.starts_with("new "));
  return function || text.starts_with("keyof ") || text.starts_with('{');
}

/// `keyword` followed by white space at the start of a type.
bool takes_keyword(std::string_view& text, std::string_view keyword) {
  if (!text.starts_with(keyword) || text.size() <= keyword.size() || text[keyword.size()] != ' ') {
    return false;
  }
  text = trimmed(text.substr(keyword.size()));
  return true;
}

}  // namespace

Value Evaluator::element_of(const File& file, DefinitionIndex scope, std::string_view type) {
  Value made;
  made.kind = Value::Kind::EXTERNAL;
  made.file = &file;
  made.definition = scope;
  made.element = type;
  return made;
}

/// What has a type that a name means: an interface or a class's instance.
Value Evaluator::instance_of(Value type, int depth) {
  if (depth > DEEPEST) return {};
  type = as_whole(type, Space::TYPES, depth);
  if (type.kind == Value::Kind::EXTERNAL) return {.kind = Value::Kind::EXTERNAL};
  if (type.kind == Value::Kind::CLASS) {
    type.kind = Value::Kind::INSTANCE;
    type.exact = false;
    type.home = {};
    return type;
  }
  if (type.kind == Value::Kind::FUNCTION) {
    type.kind = Value::Kind::INSTANCE;
    type.exact = false;
    return type;
  }
  if (type.kind != Value::Kind::INSTANCE) return {};
  type.rule = {};
  type.home = {};
  const Definition& named = definition(type);
  if (named.kind != Kind::TYPE || named.type.starts_with('{')) return type;
  const Value meant = type_value(*type.file, type.definition, named.type, depth + 1);
  return meant.kind == Value::Kind::UNKNOWN && meant.sure ? type : meant;
}

Value Evaluator::type_value(const File& file, DefinitionIndex scope, std::string_view text,
                            int depth) {
  if (depth > DEEPEST || !spend()) return {};
  text = without_parentheses(text);
  std::vector<std::string_view> choices = parts_of(text, '|');
  std::erase_if(choices, [](std::string_view part) { return is_one_of(part, NOTHING); });
  if (choices.empty()) return {};
  if (choices.size() > 1) return union_type(file, scope, choices, depth + 1);
  text = without_parentheses(choices.front());
  takes_keyword(text, "readonly");
  if (takes_keyword(text, "typeof")) {
    return is_path(text) ? expression_value(file, scope, text, depth + 1) : Value{};
  }
  if (is_anonymous(text)) return {};
  const std::vector<std::string_view> all = parts_of(text, '&');
  if (all.size() > 1) {
    for (const std::string_view part : all) {
      Value found = type_value(file, scope, part, depth + 1);
      if (found.kind == Value::Kind::INSTANCE) return found;
    }
    return {};
  }
  if (text.ends_with("[]")) {
    return element_of(file, scope, trimmed(text.substr(0, text.size() - 2)));
  }
  const std::size_t bracket = text.find('<');
  if (bracket != std::string_view::npos && text.back() == '>') {
    return generic_type(file, scope, trimmed(text.substr(0, bracket)),
                        text.substr(bracket + 1, text.size() - bracket - 2), depth + 1);
  }
  if (text.starts_with("import(")) return imported_type(file, text, depth + 1);
  return named_type(file, scope, text, depth + 1);
}

Value Evaluator::union_type(const File& file, DefinitionIndex scope,
                            const std::vector<std::string_view>& choices, int depth) {
  std::vector<Value> values;
  for (const std::string_view choice : choices) {
    values.push_back(type_value(file, scope, choice, depth + 1));
  }
  const auto useful = std::find_if(values.begin(), values.end(), [](const Value& value) {
    return value.kind == Value::Kind::INSTANCE;
  });
  const bool external = std::all_of(values.begin(), values.end(), [](const Value& value) {
    return value.kind == Value::Kind::EXTERNAL;
  });
  if (external) return {.kind = Value::Kind::EXTERNAL};
  if (useful == values.end()) return {};
  const bool same = std::all_of(values.begin(), values.end(),
                                [&](const Value& value) { return same_meaning(value, *useful); });
  return same ? *useful : unsure(*useful, "the receiver may be of several types");
}

/// `import("./a").Name`, or without a name what the module as a whole is.
Value Evaluator::imported_type(const File& file, std::string_view text, int depth) {
  const std::size_t close = text.find(')');
  if (close == std::string_view::npos || close < 9) return {};
  const std::string_view rest = text.substr(close + 1);
  const ModuleAnswer answer = module(file, text.substr(8, close - 9));
  if (answer.file == nullptr || !is_in_family(answer.file->language)) {
    return {.kind = answer.external ? Value::Kind::EXTERNAL : Value::Kind::UNKNOWN};
  }
  const std::string_view name = rest.empty() ? std::string_view("default") : rest.substr(1);
  if (!is_name(name)) return {};
  return instance_of(exported(*answer.file, name, Space::TYPES, depth + 1), depth + 1);
}

Value Evaluator::named_type(const File& file, DefinitionIndex scope, std::string_view text,
                            int depth) {
  const bool literal = text.starts_with('"') || text.starts_with('\'') || text.starts_with('`');
  if (literal || is_one_of(text, PRIMITIVE)) return {.kind = Value::Kind::EXTERNAL};
  if (text == "any" || text == "unknown" || text == "object" || text == "Object") return {};
  if (text == "this") {
    Value made = enclosing_class(file, scope);
    made.kind = made.definition == NOWHERE ? Value::Kind::UNKNOWN : Value::Kind::INSTANCE;
    return made;
  }
  const std::size_t dot = text.find('.');
  const std::string_view head = text.substr(0, dot);
  if (!is_name(head)) return {};
  const Value outer = name_value(file, scope, head, Space::TYPES, depth + 1);
  if (dot == std::string_view::npos) return instance_of(outer, depth + 1);
  const std::string_view inner = text.substr(dot + 1);
  if (!is_name(inner)) return {};
  if (outer.kind == Value::Kind::EXTERNAL) return outer;
  if (outer.kind == Value::Kind::MODULE) {
    return instance_of(exported(*outer.file, inner, Space::TYPES, depth + 1), depth + 1);
  }
  if (outer.kind != Value::Kind::NAMESPACE) return {};
  return instance_of(name_value(*outer.file, outer.definition, inner, Space::TYPES, depth + 1),
                     depth + 1);
}

/// A parameter of the functions that have a type: `(a: A) => void`, or an alias of such a type.
Value Evaluator::parameter_of_type(const File& file, DefinitionIndex scope, std::string_view type,
                                   std::size_t index, int depth) {
  if (depth > DEEPEST) return {};
  type = trimmed(type);
  std::vector<std::string_view> choices = parts_of(type, '|');
  std::erase_if(choices, [](std::string_view part) { return is_one_of(part, NOTHING); });
  const bool arrow = type.find("=>") != std::string_view::npos;
  if (!arrow && choices.size() != 1) return {};
  if (!arrow) type = choices.front();
  while (is_wrapped(type)) type = trimmed(type.substr(1, type.size() - 2));
  if (arrow && type.starts_with('<')) type = trimmed(type.substr(end_of_brackets(type)));
  if (arrow && type.starts_with('(')) {
    const std::size_t end = end_of_brackets(type);
    const std::vector<std::string_view> parameters = parts_of(type.substr(1, end - 2), ',');
    if (index >= parameters.size() || parameters[index].starts_with("...")) return {};
    const std::size_t colon = parameters[index].find(':');
    const bool named = colon != std::string_view::npos && parameters[index].front() != '{';
    return named ? type_value(file, scope, parameters[index].substr(colon + 1), depth + 1)
                 : Value{};
  }
  const std::string_view name = trimmed(type.substr(0, type.find('<')));
  if (!is_name(name)) return {};
  const Value alias = name_value(file, scope, name, Space::TYPES, depth + 1);
  if (alias.kind != Value::Kind::INSTANCE || definition(alias).kind != Kind::TYPE) return {};
  const Value made =
      parameter_of_type(*alias.file, alias.definition, definition(alias).type, index, depth + 1);
  return alias.sure ? made : unsure(made, alias.doubt);
}

Value Evaluator::generic_type(const File& file, DefinitionIndex scope, std::string_view head,
                              std::string_view arguments, int depth) {
  const std::vector<std::string_view> parts = parts_of(arguments, ',');
  if (parts.empty()) return {};
  const bool own =
      name_value(file, scope, head, Space::TYPES, depth + 1).kind == Value::Kind::INSTANCE;
  if (!own && (is_one_of(head, WRAPPERS) || is_one_of(head, PARTS))) {
    return type_value(file, scope, parts.front(), depth + 1);
  }
  if (!own && is_one_of(head, SEQUENCES)) return element_of(file, scope, parts.front());
  if (!own && is_one_of(head, MAPPINGS)) return element_of(file, scope, parts.back());
  std::string_view argument = parts.front();
  if (!own && head == "InstanceType" && takes_keyword(argument, "typeof")) {
    return instance_of(expression_value(file, scope, argument, depth + 1), depth + 1);
  }
  if (!own && head == "ReturnType" && takes_keyword(argument, "typeof")) {
    return called(expression_value(file, scope, argument, depth + 1), {}, depth + 1);
  }
  return type_value(file, scope, head, depth + 1);
}

}  // namespace context_delta::indexer::ecmascript
