#include "indexer/languages/java/headers.h"

#include <algorithm>
#include <string>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

/// From the first `<` at or behind `start` to the `>` that closes it, both left out.
std::string_view in_angles(std::string_view text, std::size_t start) {
  const std::size_t open = text.find('<', start);
  if (open == std::string_view::npos) return {};
  int depth = 0;
  for (std::size_t i = open; i < text.size(); ++i) {
    if (text[i] == '<') ++depth;
    if (text[i] == '>' && --depth == 0) return text.substr(open + 1, i - open - 1);
  }
  return {};
}

/// Where a word stands outside of brackets; npos when nowhere.
std::size_t word_outside(std::string_view text, std::string_view word) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '<' || text[i] == '(') ++depth;
    if (text[i] == '>' || text[i] == ')') --depth;
    const bool starts = depth == 0 && text.substr(i).starts_with(word) &&
                        (i == 0 || text[i - 1] == ' ' || text[i - 1] == '>' || text[i - 1] == ')');
    if (starts && i + word.size() < text.size() && text[i + word.size()] == ' ') return i;
  }
  return std::string_view::npos;
}

void add_clause(std::vector<std::string>& found, std::string_view signature,
                std::string_view word) {
  const std::size_t at = word_outside(signature, word);
  if (at == std::string_view::npos) return;
  std::string_view clause = signature.substr(at + word.size());
  for (const std::string_view next : {"extends", "implements", "permits"}) {
    clause = clause.substr(0, word_outside(clause, next));
  }
  for (const std::string_view each : split_outside(clause, ',')) {
    found.emplace_back(kit::trimmed(each));
  }
}

std::size_t after_name(const Definition& definition) {
  const std::size_t at = definition.signature.find(" " + definition.name);
  return at == std::string::npos ? at : at + 1 + definition.name.size();
}

}  // namespace

std::vector<std::string_view> split_outside(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  int depth = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (byte == '<' || byte == '(' || byte == '{') ++depth;
    if ((byte == '>' && (i == 0 || text[i - 1] != '-')) || byte == ')' || byte == '}') --depth;
    if (byte != separator || depth > 0) continue;
    parts.push_back(text.substr(start, i - start));
    start = i + 1;
  }
  if (!text.empty()) parts.push_back(text.substr(start));
  return parts;
}

std::vector<TypeParameter> type_parameters(const Definition& definition) {
  std::vector<TypeParameter> found;
  if ((definition.traits & GENERIC) == 0) return found;
  std::size_t start = 0;
  if (kit::is_class_kind(definition.kind)) start = after_name(definition);
  if (start == std::string::npos) return found;
  for (const std::string_view part : split_outside(in_angles(definition.signature, start), ',')) {
    std::string_view each = kit::trimmed(part);
    while (each.starts_with('@') && each.find(' ') != std::string_view::npos) {
      each = kit::trimmed(each.substr(each.find(' ')));
    }
    const std::size_t space = each.find(' ');
    TypeParameter made;
    made.name = each.substr(0, space);
    const std::size_t bound = each.find("extends ");
    if (bound != std::string_view::npos) made.bound = kit::trimmed(each.substr(bound + 8));
    found.push_back(std::move(made));
  }
  return found;
}

std::vector<std::string> written_supertypes(const Definition& definition) {
  std::vector<std::string> found;
  const std::string_view signature = definition.signature;
  if (signature.starts_with("new ")) {
    const std::string_view type = signature.substr(4);
    found.emplace_back(kit::trimmed(type.substr(0, type.find('('))));
  } else if (definition.kind == Kind::INTERFACE) {
    add_clause(found, signature, "extends");
  } else {
    add_clause(found, signature, "extends");
    add_clause(found, signature, "implements");
  }
  return found.size() == definition.bases.size() ? found : definition.bases;
}

bool is_record(const Definition& definition) {
  return definition.signature.find("record " + definition.name) != std::string::npos;
}

bool is_anonymous(const kit::Outline& outline, DefinitionIndex index) {
  const Definition& own = outline.definition(index);
  if (own.kind != Kind::CLASS || own.bases.size() != 1) return false;
  if (own.name.starts_with('<')) return true;
  return own.parent != NOWHERE && !is_record(own) &&
         own.signature.find("class ") == std::string::npos &&
         outline.definition(own.parent).kind == Kind::ENUM;
}

}  // namespace context_delta::indexer::java
