#include <algorithm>
#include <utility>
#include <vector>

#include "indexer/languages/c/c.h"
#include "indexer/languages/c_family/includes.h"
#include "indexer/languages/c_family/library.h"
#include "indexer/languages/c_family/linkage.h"
#include "indexer/languages/c_family/naming.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"
#include "indexer/languages/kit/scopes.h"

namespace context_delta::indexer::c {
namespace {

using c_family::Linked;
using kit::Binder;

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file), facts_(facts), world_(world), scopes_(facts), linkage_(file, world) {
    neighbourhood_.file = &file;
    neighbourhood_.imported = linkage_.seen().ids();
  }

  Resolution run();

 private:
  void resolve_call(std::int32_t index, const Reference& reference);
  void resolve_type(std::int32_t index, const Reference& reference);
  bool is_shadowed(const Reference& reference) const;

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  c_family::Linkage linkage_;
  kit::Neighbourhood neighbourhood_;
  Resolution made_;
};

Resolution Resolver::run() {
  for (std::size_t i = 0; i < facts_.definitions.size(); ++i) {
    made_.qualified_names.push_back(c_family::distinct_name(
        file_, facts_, static_cast<DefinitionIndex>(i), facts_.definitions[i].name, world_));
  }
  for (std::size_t i = 0; i < facts_.references.size(); ++i) {
    const Reference& reference = facts_.references[i];
    const auto index = static_cast<std::int32_t>(i);
    if (!reference.receiver.empty()) continue;  // a member holds a pointer, whatever its name
    if (is_call(reference.role)) {
      resolve_call(index, reference);
    } else {
      resolve_type(index, reference);
    }
  }
  return std::move(made_);
}

/// Whether a parameter or local variable around the call has its name.
bool Resolver::is_shadowed(const Reference& reference) const {
  for (DefinitionIndex at = reference.enclosing; at != NOWHERE;
       at = kit::definition_at(facts_, at).parent) {
    for (const Binder& binder : scopes_.find(at, reference.name)) {
      if (binder.kind == Binder::Kind::BINDING) return true;
    }
  }
  return false;
}

void Resolver::resolve_call(std::int32_t index, const Reference& reference) {
  std::vector<Candidate> candidates;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    const bool callable = candidate.kind == Kind::FUNCTION || candidate.kind == Kind::MACRO;
    if (callable && c_family::is_family(candidate.file->language)) candidates.push_back(candidate);
  }
  Linked found = linkage_.find(candidates, reference);
  if (found.proven && is_shadowed(reference)) {
    found = {.why = "a parameter or local variable has this name", .fitting = {*found.target}};
  }
  if (found.proven) {
    made_.edges.push_back(
        {.reference = index, .target = *found.target, .proven = true, .rule = found.rule});
    return;
  }
  if (c_family::is_library_function(reference.name)) return;
  kit::add_guess(made_.edges, {.reference = index, .why = found.why}, std::move(found.fitting),
                 neighbourhood_);
}

void Resolver::resolve_type(std::int32_t index, const Reference& reference) {
  const Candidate* only = nullptr;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    const bool is_type = kit::is_class_kind(candidate.kind) || candidate.kind == Kind::TYPE;
    if (!is_type || !linkage_.seen().contains(*candidate.file)) continue;
    if (only != nullptr) return;
    only = &candidate;
  }
  if (only == nullptr) return;
  made_.edges.push_back({.reference = index, .target = *only, .proven = true, .rule = "include"});
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::c
