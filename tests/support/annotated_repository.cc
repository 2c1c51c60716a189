#include "support/annotated_repository.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <stdexcept>

#include "indexer/model/rules.h"

namespace context_delta::tests {

using indexer::Binding;
using indexer::Definition;
using indexer::DefinitionIndex;
using indexer::Edge;
using indexer::Facts;
using indexer::Import;
using indexer::NOWHERE;
using indexer::Reference;

namespace {

bool is_word(char byte) { return std::isalnum(static_cast<unsigned char>(byte)) || byte == '_'; }

std::string count_text(std::int16_t count) {
  return count == indexer::ANY_NUMBER ? "*" : std::to_string(count);
}

std::string name_of(const Facts& facts, DefinitionIndex index) {
  return index == NOWHERE ? "-" : facts.definitions[static_cast<std::size_t>(index)].name;
}

std::string traits_text(std::uint16_t traits) {
  static constexpr std::array<std::string_view, 12> NAMES = {
      "local",  "conditional", "decorated",  "declaration", "virtual",  "generic",
      "static", "broken",      "from-macro", "reassigned",  "property", "maybe-cast"};
  std::string text;
  for (std::size_t bit = 0; bit < NAMES.size(); ++bit) {
    if ((traits >> bit & 1) != 0) text += (text.empty() ? "" : ",") + std::string(NAMES[bit]);
  }
  return text.empty() ? "" : " {" + text + "}";
}

}  // namespace

AnnotatedText::AnnotatedText(std::string_view marked) {
  std::int32_t line = 1;
  for (std::size_t at = 0; at < marked.size(); ++at) {
    std::size_t end = at + 1;
    while (end < marked.size() && is_word(marked[end])) ++end;
    if (marked[at] == '$' && end > at + 1 && end < marked.size() && marked[end] == '^') {
      const std::string name(marked.substr(at + 1, end - at - 1));
      std::size_t word = end + 1;
      while (word < marked.size() && (is_word(marked[word]) || marked[word] == '~')) ++word;
      lines[name] = line;
      words[name] = std::string(marked.substr(end + 1, word - end - 1));
      at = end;
      continue;
    }
    if (marked[at] == '\n') ++line;
    text += marked[at];
  }
}

void AnnotatedRepository::add(const std::string& path, std::string_view marked) {
  const AnnotatedText annotated(marked);
  for (const auto& [name, line] : annotated.lines) {
    places_[name] = {path, line, annotated.words.at(name)};
  }
  source_.add(path, annotated.text);
}

std::vector<Edge> AnnotatedRepository::edges_at(const Place& place) {
  const MemorySource::Entry& entry = source_.files().at(place.path);
  const indexer::Resolution resolution = source_.resolve(place.path);
  std::vector<Edge> found;
  bool known = false;
  for (std::size_t i = 0; i < entry.facts->references.size(); ++i) {
    const Reference& reference = entry.facts->references[i];
    if (reference.line != place.line || reference.name != place.word) continue;
    known = true;
    for (const Edge& edge : resolution.edges) {
      if (edge.reference != static_cast<std::int32_t>(i)) continue;
      for (const indexer::Place& target : targets(resolution, edge)) {
        found.push_back(edge);
        found.back().target = target;
      }
    }
  }
  if (!known) throw std::runtime_error("no reference to '" + place.word + "' at the mark");
  return found;
}

const Definition& AnnotatedRepository::definition_of(const indexer::Place& place) const {
  const MemorySource::Entry& entry = source_.files().at(place.file->path);
  return entry.facts->definitions[static_cast<std::size_t>(place.definition)];
}

std::string AnnotatedRepository::edge(const std::string& call, const std::string& target) {
  const Place& to = places_.at(target);
  for (const Edge& edge : edges_at(places_.at(call))) {
    const Definition& definition = definition_of(edge.target);
    if (edge.target.file->path != to.path || definition.name_line != to.line) continue;
    const bool known = indexer::is_rule(edge.rule) && (edge.proven || indexer::is_doubt(edge.why));
    if (!known)
      return "words outside the vocabulary: " + std::string(edge.rule) + ", " +
             std::string(edge.why);
    if (edge.proven) return "proven " + std::string(edge.rule);
    return "guessed " + std::string(edge.rule) + ": " + std::string(edge.why) + " (of " +
           std::to_string(edge.candidates) + ")";
  }
  return "no edge";
}

std::vector<std::string> AnnotatedRepository::edges(const std::string& call) {
  std::vector<std::string> texts;
  for (const Edge& edge : edges_at(places_.at(call))) {
    texts.push_back((edge.proven ? "proven " : "guessed ") + edge.target.file->path + ":" +
                    std::to_string(definition_of(edge.target).first_line));
  }
  return texts;
}

std::string describe_definitions(const MemorySource::Entry& entry,
                                 const std::vector<std::string>& qualified_names) {
  std::ostringstream out;
  for (std::size_t i = 0; i < entry.facts->definitions.size(); ++i) {
    const Definition& each = entry.facts->definitions[i];
    out << kind_name(each.kind) << ' ' << qualified_names[i] << ' ' << each.first_line << '-'
        << each.last_line << " @" << each.name_line;
    if (each.kind == indexer::Kind::FUNCTION || each.kind == indexer::Kind::METHOD ||
        each.kind == indexer::Kind::CONSTRUCTOR) {
      out << " [" << count_text(each.least_arguments) << ' ' << count_text(each.most_arguments)
          << ']';
    }
    out << traits_text(each.traits) << " `" << each.signature << "`\n";
  }
  return out.str();
}

std::string describe_references(const Facts& facts) {
  static constexpr std::array<std::string_view, 7> ROLES = {
      "call", "construct", "decorate", "type", "import", "inherit", "other"};
  std::ostringstream out;
  for (const Reference& each : facts.references) {
    out << each.line << ' ' << ROLES[static_cast<std::size_t>(each.role)] << ' ' << each.receiver
        << describe(facts.expressions, each.receiver_expression) << '|' << each.name;
    if (is_call(each.role)) out << '(' << count_text(each.arguments) << ')';
    out << " in " << name_of(facts, each.enclosing) << traits_text(each.traits) << '\n';
  }
  return out.str();
}

std::string describe_bindings(const Facts& facts) {
  static constexpr std::array<std::string_view, 4> KINDS = {"parameter", "local", "member",
                                                            "global"};
  std::ostringstream out;
  std::vector<Binding> bindings = facts.bindings;
  std::stable_sort(bindings.begin(), bindings.end(),
                   [](const Binding& a, const Binding& b) { return a.line < b.line; });
  for (const Binding& each : bindings) {
    out << KINDS[static_cast<std::size_t>(each.kind)] << ' ' << each.name << " in "
        << name_of(facts, each.scope);
    if (!each.type.empty()) out << " : " << each.type;
    if (!each.value.empty()) out << " = " << each.value;
    if (each.value_expression != indexer::NO_EXPRESSION) {
      out << " = " << describe(facts.expressions, each.value_expression);
    }
    out << traits_text(each.traits) << '\n';
  }
  for (const Import& each : facts.imports) {
    out << "import " << each.module << '|' << each.name << '|' << each.alias << " in "
        << name_of(facts, each.scope) << traits_text(each.traits) << '\n';
  }
  return out.str();
}

}  // namespace context_delta::tests
