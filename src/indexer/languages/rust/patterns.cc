#include <cctype>
#include <string>
#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/extractor.h"

namespace context_delta::indexer::rust {
namespace {

using kit::child;

/// Variables are written in lower case; other names in patterns are constants and variants.
bool is_variable(std::string_view name) {
  return !name.empty() && name != "_" && std::isupper(static_cast<unsigned char>(name[0])) == 0;
}

std::string with(const std::string& value, const std::string& step) {
  const std::string& whole = value.empty() ? "?" : value;
  return whole.size() + step.size() > kit::LONGEST_SIGNATURE ? "?" + step : whole + step;
}

}  // namespace

void Extractor::bind_variable(std::string_view name, std::string value, std::string type,
                              Binding::Kind kind, std::int32_t line) {
  Binding made;
  made.name = locals_.declare(kit::one_line(name, kit::LONGEST_EXPRESSION));
  made.kind = kind;
  made.scope = builder_.frame().definition;
  made.type = std::move(type);
  made.value = std::move(value);
  made.line = line;
  builder_.bind(std::move(made));
}

/// Binds the variables of a pattern to the parts of a value; without one, those of tuples get
/// their types from `type`.
void Extractor::bind_pattern(TSNode pattern, const std::string& value, const std::string& type,
                             Binding::Kind kind) {
  struct Part {
    TSNode node;
    std::string value;
  };
  if (rust_.kind(pattern) == Node::MUT_PATTERN) {
    const std::vector<TSNode> inner = kit::named_children(pattern);
    if (!inner.empty()) pattern = inner.back();
  }
  if (rust_.kind(pattern) == Node::IDENTIFIER && !type.empty()) {
    if (text_of(pattern) == "self") return;
    return bind_variable(text_of(pattern), {}, type, kind, kit::first_line(pattern));
  }
  std::vector<Part> parts = {{pattern, type.empty() ? value : "<" + type + ">"}};
  while (!parts.empty()) {
    const Part part = std::move(parts.back());
    parts.pop_back();
    const Node node_kind = rust_.kind(part.node);
    std::vector<TSNode> inside = kit::named_children(part.node);
    std::erase_if(inside, [&](TSNode each) { return rust_.kind(each) == Node::COMMENT; });
    std::vector<Part> found;
    switch (node_kind) {
      case Node::IDENTIFIER:
      case Node::SHORTHAND_FIELD:
        if (is_variable(text_of(part.node))) {
          bind_variable(text_of(part.node), part.value, {}, kind, kit::first_line(part.node));
        }
        break;
      case Node::TUPLE_PATTERN:
      case Node::SLICE_PATTERN: {
        bool rest = false;
        for (std::size_t i = 0; i < inside.size(); ++i) {
          rest = rest || rust_.kind(inside[i]) == Node::REMAINING_FIELDS;
          const std::string step =
              node_kind == Node::SLICE_PATTERN ? "[]" : "." + std::to_string(i);
          const bool unknown = rest && node_kind == Node::TUPLE_PATTERN;
          found.push_back({inside[i], unknown ? "?" : with(part.value, step)});
        }
        break;
      }
      case Node::TUPLE_STRUCT_PATTERN: {
        const TSNode path = child(part.node, rust_.field.type);
        refer_to_pattern(path);
        const std::string step = "~" + path_text(path) + ".";
        bool rest = false;
        for (std::size_t i = 1; i < inside.size(); ++i) {
          rest = rest || rust_.kind(inside[i]) == Node::REMAINING_FIELDS;
          found.push_back({inside[i], rest ? "?" : with(part.value, step + std::to_string(i - 1))});
        }
        break;
      }
      case Node::STRUCT_PATTERN: {
        const TSNode path = child(part.node, rust_.field.type);
        refer_to_pattern(path);
        for (const TSNode field : inside) {
          if (rust_.kind(field) != Node::FIELD_PATTERN) continue;
          const TSNode name = child(field, rust_.field.name);
          const TSNode inner = child(field, rust_.field.pattern);
          found.push_back(
              {kit::is_null(inner) ? name : inner,
               with(part.value, "~" + path_text(path) + "." + kit::one_line(text_of(name)))});
        }
        break;
      }
      case Node::OR_PATTERN:
        // Each side binds the same names.
        if (!inside.empty()) found.push_back({inside.front(), part.value});
        break;
      case Node::CAPTURED_PATTERN:
        for (const TSNode each : inside) found.push_back({each, part.value});
        break;
      case Node::SCOPED_IDENTIFIER:
        refer_to_pattern(part.node);
        break;
      case Node::MATCH_PATTERN:
      case Node::MUT_PATTERN:
      case Node::REF_PATTERN:
      case Node::REFERENCE_PATTERN:
        for (const TSNode each : inside) {
          if (rust_.kind(each) == Node::MUTABLE) continue;
          found.push_back({each, part.value});
          break;
        }
        break;
      default:
        break;
    }
    for (auto each = found.rbegin(); each != found.rend(); ++each) {
      parts.push_back(std::move(*each));
    }
  }
}

void Extractor::refer_to_pattern(TSNode path) { refer_to_path(path, Role::TYPE); }

}  // namespace context_delta::indexer::rust
