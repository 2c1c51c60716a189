#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/go/builtins.h"
#include "indexer/languages/go/constraints.h"
#include "indexer/languages/go/go.h"
#include "indexer/languages/go/values.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

using kit::definition_at;

/// Most definitions listed for a call through an interface, its own method included.
constexpr std::size_t MOST_IMPLEMENTATIONS = 4;

/// The type that has a method, wherever in its package the method stands.
std::string type_key(const Candidate& method) {
  return std::string(kit::folder_of(method.file->path)) + ":" + method.container;
}

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world);
  Resolution run();

 private:
  std::string qualified_name(DefinitionIndex index);
  void resolve(std::int32_t index);
  void resolve_local_call(std::int32_t index);
  void resolve_call(std::int32_t index, const Value& value, const Value& owner);
  void prove(std::int32_t index, const Value& value);
  void guess_meaning(std::int32_t index, const Value& value, std::string_view why);
  void guess_implementation(std::int32_t index, const Value& value);
  /// How many methods an interface has, and how many of them each type declares.
  struct Implementers {
    std::size_t of = 0;
    std::unordered_map<std::string, std::size_t> methods;
  };
  const Implementers& implementers_of(const Value& method);
  bool is_method_with_body(const Candidate& candidate) const;
  bool embeds(const Candidate& method);
  bool is_hidden_test(const Candidate& candidate) const;
  void guess_namesakes(std::int32_t index, std::string_view why);
  void add_guess(std::int32_t index, std::string_view rule, std::string_view why,
                 const std::optional<Candidate>& favourite, std::vector<Candidate> fitting);
  Candidate candidate_of(const File& file, DefinitionIndex definition);
  const Reference& reference(std::int32_t index) const {
    return facts_.references[static_cast<std::size_t>(index)];
  }

  const File& file_;
  const Facts& facts_;
  World& world_;
  Evaluator values_;
  kit::Neighbourhood neighbourhood_;
  std::map<std::pair<std::int64_t, DefinitionIndex>, Implementers> implementers_;
  Resolution made_;
};

Resolver::Resolver(const File& file, const Facts& facts, World& world)
    : file_(file), facts_(facts), world_(world), values_(file, facts, world) {
  neighbourhood_.file = &file;
  for (const Imported& each : imports_of(file, world)) {
    if (each.package == nullptr) continue;
    for (const PackageFile& part : each.package->files) {
      neighbourhood_.imported.insert(part.file->id);
    }
  }
}

Resolution Resolver::run() {
  made_.module_name = import_path(file_, facts_, world_);
  for (std::size_t i = 0; i < facts_.definitions.size(); ++i) {
    made_.qualified_names.push_back(qualified_name(static_cast<DefinitionIndex>(i)));
  }
  for (std::size_t i = 0; i < facts_.references.size(); ++i) {
    resolve(static_cast<std::int32_t>(i));
  }
  return std::move(made_);
}

std::string Resolver::qualified_name(DefinitionIndex index) {
  const Definition& named = definition_at(facts_, index);
  if (named.parent != NOWHERE) {
    return made_.qualified_names[static_cast<std::size_t>(named.parent)] + "." + named.name;
  }
  std::string prefix = made_.module_name.empty() ? "" : made_.module_name + ".";
  if (named.scope.empty()) return prefix + named.name;
  const bool by_pointer = named.signature.find('*') < named.signature.find(')');
  return prefix + (by_pointer ? "(*" + named.scope + ")" : named.scope) + "." + named.name;
}

void Resolver::resolve(std::int32_t index) {
  const Reference& use = reference(index);
  if (use.receiver.starts_with('\'')) return resolve_local_call(index);
  Value owner;
  Value value;
  if (use.receiver.empty()) {
    value = values_.name_value(file_, use.enclosing, use.name);
  } else {
    owner = values_.receiver_value(use.enclosing, use.receiver);
    value = values_.member(owner, use.name);
  }
  if (is_call(use.role)) return resolve_call(index, value, owner);
  if (value.is_definition() && value.sure && value.kind == Value::Kind::TYPE) prove(index, value);
}

/// A local may hold a function that has a name elsewhere; only a closure is sure to be meant.
void Resolver::resolve_local_call(std::int32_t index) {
  const Reference& use = reference(index);
  const Value value = values_.local_value(use.enclosing, use.name + use.receiver);
  if (value.kind == Value::Kind::FUNCTION) {
    const bool closure = !value.variable && value.sure && (use.traits & BROKEN) == 0;
    return closure ? prove(index, value) : guess_meaning(index, value, "the name is a variable");
  }
  const Value shadowed = values_.name_value(file_, use.enclosing, use.name);
  if (shadowed.kind == Value::Kind::FUNCTION) {
    guess_meaning(index, shadowed, "the name is a parameter or local variable");
  }
}

void Resolver::resolve_call(std::int32_t index, const Value& value, const Value& owner) {
  const Reference& use = reference(index);
  if (value.kind == Value::Kind::EXTERNAL) return;
  if (!value.is_definition()) {
    const bool open = !use.receiver.empty() && value.kind == Value::Kind::UNKNOWN &&
                      owner.kind != Value::Kind::PACKAGE;
    if (open) guess_namesakes(index, "the receiver's type is not known");
    return;
  }
  if (value.abstract) return guess_implementation(index, value);
  if (value.promoted) {
    return guess_meaning(index, value, "the method is promoted from an embedded type");
  }
  if ((use.traits & BROKEN) != 0) {
    return guess_meaning(index, value, "the text around the call does not parse");
  }
  const bool proven = value.sure && !value.variable;
  return proven ? prove(index, value) : guess_meaning(index, value, "the name is a variable");
}

Candidate Resolver::candidate_of(const File& file, DefinitionIndex definition) {
  const kit::Outline& known = values_.outline(file);
  const Definition& made = known.definition(definition);
  return {.file = &file,
          .definition = definition,
          .kind = made.kind,
          .traits = made.traits,
          .least_arguments = made.least_arguments,
          .most_arguments = made.most_arguments,
          .first_line = made.first_line,
          .container = known.container(definition)};
}

void Resolver::prove(std::int32_t index, const Value& value) {
  made_.edges.push_back({.reference = index,
                         .target = candidate_of(*value.file, value.definition),
                         .proven = true,
                         .rule = value.rule.empty() ? "same-package" : value.rule});
}

void Resolver::guess_meaning(std::int32_t index, const Value& value, std::string_view why) {
  std::vector<Candidate> fitting;
  for (const Place& place : value.choices) {
    fitting.push_back(candidate_of(*place.in->file, place.definition));
  }
  const Candidate favourite = candidate_of(*value.file, value.definition);
  if (fitting.empty()) fitting.push_back(favourite);
  add_guess(index, "namesake", value.doubt.empty() ? why : value.doubt, favourite,
            std::move(fitting));
}

/// The interface's method and those of the types that may implement it.
void Resolver::guess_implementation(std::int32_t index, const Value& value) {
  const Reference& use = reference(index);
  const Candidate favourite = candidate_of(*value.file, value.definition);
  const Implementers& known = implementers_of(value);
  std::vector<Candidate> fitting = {favourite};
  for (const Candidate& each : world_.definitions(use.name)) {
    if (!is_method_with_body(each) || is_hidden_test(each)) continue;
    if (!kit::accepts_arguments(each, use.arguments)) continue;
    const auto listed = known.methods.find(type_key(each));
    const std::size_t methods = listed == known.methods.end() ? 0 : listed->second;
    if (2 * methods >= known.of || embeds(each)) fitting.push_back(each);
  }
  const std::size_t before = made_.edges.size();
  add_guess(index, "dispatch", "the receiver is an interface", favourite, std::move(fitting));
  if (made_.edges.size() > before + MOST_IMPLEMENTATIONS) {
    made_.edges.resize(before + MOST_IMPLEMENTATIONS);
  }
}

bool Resolver::is_method_with_body(const Candidate& candidate) const {
  return candidate.kind == Kind::METHOD && candidate.file->language == file_.language &&
         (candidate.traits & VIRTUAL) == 0 && !candidate.container.empty();
}

/// Programs are built without tests.
bool Resolver::is_hidden_test(const Candidate& candidate) const {
  return is_test_file(candidate.file->path) && !is_test_file(file_.path);
}

/// Counts, for each type of the repository, the methods that it shares with the interface.
const Resolver::Implementers& Resolver::implementers_of(const Value& method) {
  const DefinitionIndex owner = values_.definition(method).parent;
  const auto [place, added] = implementers_.try_emplace({method.file->id, owner});
  if (!added) return place->second;
  Implementers& made = place->second;
  const Value interface = {.kind = Value::Kind::TYPE, .file = method.file, .definition = owner};
  for (const std::string_view name : values_.method_names(interface)) {
    ++made.of;
    std::set<std::string> having;
    for (const Candidate& each : world_.definitions(name)) {
      if (is_method_with_body(each)) having.insert(type_key(each));
    }
    for (const std::string& type : having) ++made.methods[type];
  }
  return made;
}

/// Whether the type of a method embeds others, which may bring it the methods that it lacks.
bool Resolver::embeds(const Candidate& method) {
  const kit::Outline& there = values_.outline(*method.file);
  const auto types = there.find(NOWHERE, method.container);
  return std::any_of(types.begin(), types.end(), [&](const kit::Binder& each) {
    return each.kind == kit::Binder::Kind::DEFINITION &&
           !there.definition(each.index).bases.empty();
  });
}

void Resolver::guess_namesakes(std::int32_t index, std::string_view why) {
  const Reference& use = reference(index);
  const bool common = is_common_method(use.name);
  std::vector<Candidate> fitting;
  for (const Candidate& each : world_.definitions(use.name)) {
    if (each.kind != Kind::METHOD || each.file->language != file_.language) continue;
    if (is_hidden_test(each) || !kit::accepts_arguments(each, use.arguments)) continue;
    if (common && kit::nearness(each, neighbourhood_) == 3) continue;
    fitting.push_back(each);
  }
  add_guess(index, "namesake", why, std::nullopt, std::move(fitting));
}

void Resolver::add_guess(std::int32_t index, std::string_view rule, std::string_view why,
                         const std::optional<Candidate>& favourite,
                         std::vector<Candidate> fitting) {
  kit::add_guess(made_.edges,
                 {.reference = index,
                  .rule = rule,
                  .why = why,
                  .favourite = favourite ? &*favourite : nullptr},
                 std::move(fitting), neighbourhood_);
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::go
