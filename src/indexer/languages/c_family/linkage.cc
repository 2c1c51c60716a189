#include "indexer/languages/c_family/linkage.h"

#include <algorithm>

#include "indexer/languages/kit/guesses.h"

namespace context_delta::indexer::c_family {
namespace {

bool is_definition(const Candidate& candidate) {
  return candidate.kind != Kind::MACRO && (candidate.traits & DECLARATION) == 0;
}

/// `dir/name.h` for `dir/name.c`.
bool is_own_header(const File& source, const File& header) {
  const auto stem = [](std::string_view path) { return path.substr(0, path.rfind('.')); };
  return stem(source.path) == stem(header.path);
}

Linked doubtful(std::vector<Candidate> fitting, std::string_view why) {
  Linked made;
  made.why = why;
  made.fitting = std::move(fitting);
  return made;
}

Linked proven(const Candidate* target, std::string_view rule) {
  Linked made;
  made.target = target;
  made.proven = true;
  made.rule = rule;
  return made;
}

}  // namespace

Linked Linkage::find(const std::vector<Candidate>& candidates, const Reference& reference) {
  Linked found = find_any(candidates, reference.arguments);
  if (!found.proven) return found;
  if ((reference.traits & BROKEN) != 0) {
    return doubtful({*found.target}, "the text around the call does not parse");
  }
  if ((reference.traits & MAYBE_CAST) != 0 && found.target->kind == Kind::MACRO) return {};
  if ((found.target->traits & CONDITIONAL) != 0) {
    return doubtful({*found.target}, "the definition stands under a condition");
  }
  return found;
}

Linked Linkage::find_any(const std::vector<Candidate>& candidates, std::int16_t arguments) {
  std::vector<Candidate> macros;
  const Candidate* visible = nullptr;
  for (const Candidate& candidate : candidates) {
    if (candidate.kind != Kind::MACRO) continue;
    if (!kit::accepts_arguments(candidate, arguments)) continue;
    macros.push_back(candidate);
    if (seen_.contains(*candidate.file)) visible = &candidate;
  }
  const bool any_function = std::any_of(candidates.begin(), candidates.end(), is_definition);
  if (visible == nullptr && !any_function) return {};
  if (macros.empty()) return find_definition(candidates, arguments);
  Linked found = find_definition(candidates, arguments);
  const bool only_macros = found.target == nullptr && found.fitting.empty();
  if (only_macros && macros.size() == 1 && visible != nullptr) return proven(visible, "macro");
  std::vector<Candidate> fitting = found.fitting;
  if (found.target != nullptr) fitting.push_back(*found.target);
  for (const Candidate& macro : macros) {
    if (seen_.contains(*macro.file)) fitting.push_back(macro);
  }
  return doubtful(std::move(fitting), "a macro has this name");
}

Linked Linkage::find_definition(const std::vector<Candidate>& candidates, std::int16_t arguments) {
  std::vector<const Candidate*> visible;  // in this file or an included one
  std::vector<const Candidate*> linked;   // elsewhere, with external linkage
  std::vector<Candidate> fitting;
  bool own = false;
  for (const Candidate& candidate : candidates) {
    if (!is_definition(candidate)) continue;
    const bool seen = seen_.contains(*candidate.file);
    if (!seen && (candidate.traits & LOCAL_LINKAGE) != 0) continue;
    (seen ? visible : linked).push_back(&candidate);
    own = own || candidate.file->id == file_.id;
    fitting.push_back(candidate);
  }
  if (own) {
    std::erase_if(visible, [&](const Candidate* each) { return each->file->id != file_.id; });
  }
  const std::vector<const Candidate*>& chosen = visible.empty() ? linked : visible;
  if (chosen.empty()) return {};
  if (chosen.size() > 1) {
    return doubtful(std::move(fitting), "the repository defines the function more than once");
  }
  const Candidate& only = *chosen.front();
  if (!kit::accepts_arguments(only, arguments)) {
    return doubtful(std::move(fitting), "the number of arguments does not fit");
  }
  if ((only.traits & (BROKEN | FROM_MACRO)) != 0) {
    return doubtful(std::move(fitting), "the definition's text does not parse");
  }
  if (own) return proven(&only, "same-file");
  if (!visible.empty()) return proven(&only, "include");
  if (is_declared_for_both(candidates, only)) return proven(&only, "declaration");
  return doubtful(std::move(fitting), "no header that both files include declares the function");
}

bool Linkage::is_declared_for_both(const std::vector<Candidate>& candidates,
                                   const Candidate& definition) {
  return std::any_of(candidates.begin(), candidates.end(), [&](const Candidate& each) {
    return (each.traits & DECLARATION) != 0 && (each.traits & LOCAL_LINKAGE) == 0 &&
           seen_.contains(*each.file) && each.file->id != file_.id &&
           (is_own_header(*definition.file, *each.file) || includes(*definition.file, *each.file));
  });
}

bool Linkage::includes(const File& file, const File& header) {
  const auto [place, added] = closures_.try_emplace(file.id, file, world_);
  return place->second.contains(header);
}

}  // namespace context_delta::indexer::c_family
