#include "indexer/languages/java/overloads.h"

#include <algorithm>

namespace context_delta::indexer::java {
namespace {

/// Of more methods than this that take as many arguments, none is proven.
constexpr std::size_t MOST_OVERLOADS = 100;

enum class Phase { STRICT, LOOSE, VARIADIC };

/// The type of the parameter that takes an argument.
Type parameter_at(const Method& method, std::size_t position, Phase phase) {
  const std::size_t last = method.parameters.size() - 1;
  if (phase != Phase::VARIADIC || position < last) return method.parameters[position];
  Type element = method.parameters[last];
  if (element.dimensions > 0) --element.dimensions;
  return element;
}

bool takes(const Method& method, std::size_t count, Phase phase) {
  if (phase != Phase::VARIADIC) return method.parameters.size() == count;
  return method.variadic && count + 1 >= method.parameters.size();
}

/// An argument of unknown type decides nothing where all methods take the same type.
bool decides(const std::vector<const Method*>& methods, std::size_t position, Phase phase) {
  return std::any_of(methods.begin(), methods.end(), [&](const Method* each) {
    return !same_type(parameter_at(*each, position, phase),
                      parameter_at(*methods.front(), position, phase));
  });
}

Verdict applies(TypeNames& names, const Method& method, const Arguments& arguments, Phase phase,
                const std::vector<bool>& deciding) {
  Verdict worst = Verdict::YES;
  for (std::size_t i = 0; i < arguments.types.size(); ++i) {
    const Type& from = arguments.types[i];
    const Type to = parameter_at(method, i, phase);
    Verdict each = phase == Phase::STRICT ? is_subtype(names, from, to) : converts(names, from, to);
    if (each == Verdict::MAYBE && !deciding[i]) each = Verdict::YES;
    worst = std::min(worst, each);
  }
  return worst;
}

/// Whether every argument of `a` could be passed on to `b`, which takes the arguments too.
bool is_more_specific(TypeNames& names, const Method& a, const Method& b,
                      const Arguments& arguments, Phase phase) {
  for (std::size_t i = 0; i < arguments.types.size(); ++i) {
    const Type from = names.erased(parameter_at(a, i, phase));
    const Type to = names.erased(parameter_at(b, i, phase));
    // Whatever else takes the argument takes its very type.
    if (same_type(from, arguments.types[i])) continue;
    if (!same_type(from, to) && is_subtype(names, from, to) != Verdict::YES) return false;
  }
  return true;
}

const Method* most_specific(TypeNames& names, const std::vector<const Method*>& methods,
                            const Arguments& arguments, Phase phase) {
  for (const Method* each : methods) {
    const bool is_most = std::all_of(methods.begin(), methods.end(), [&](const Method* other) {
      return other == each || is_more_specific(names, *each, *other, arguments, phase);
    });
    if (is_most) return each;
  }
  return nullptr;
}

struct Applicable {
  std::vector<const Method*> certain;
  std::vector<const Method*> possible;
  bool empty() const { return certain.empty() && possible.empty(); }
};

Applicable applicable(TypeNames& names, const std::vector<Method>& methods,
                      const Arguments& arguments, Phase phase) {
  std::vector<const Method*> counted;
  for (const Method& each : methods) {
    if (takes(each, arguments.types.size(), phase)) counted.push_back(&each);
  }
  std::vector<bool> deciding;
  for (std::size_t i = 0; i < arguments.types.size() && !counted.empty(); ++i) {
    deciding.push_back(decides(counted, i, phase));
  }
  Applicable found;
  for (const Method* each : counted) {
    const Verdict verdict = applies(names, *each, arguments, phase, deciding);
    if (verdict == Verdict::YES) found.certain.push_back(each);
    if (verdict == Verdict::MAYBE) found.possible.push_back(each);
  }
  return found;
}

void append(std::vector<Method>& to, const std::vector<const Method*>& from) {
  for (const Method* each : from) {
    const bool there = std::any_of(to.begin(), to.end(), [&](const Method& other) {
      return other.file == each->file && other.definition == each->definition;
    });
    if (!there) to.push_back(*each);
  }
}

/// Without counts: a name with one method means it.
Choice choose_by_name(const std::vector<Method>& methods) {
  Choice made;
  const std::size_t listed = std::min(methods.size(), MOST_OVERLOADS);
  made.fitting.assign(methods.begin(), methods.begin() + static_cast<std::ptrdiff_t>(listed));
  made.sure = methods.size() == 1;
  return made;
}

Choice choose_by_count(const std::vector<Method>& methods, const Arguments& arguments) {
  Choice made;
  for (const Method& each : methods) {
    const bool fits = takes(each, arguments.types.size(), Phase::STRICT) ||
                      takes(each, arguments.types.size(), Phase::VARIADIC);
    if (fits && made.fitting.size() < MOST_OVERLOADS) made.fitting.push_back(each);
  }
  made.sure = made.fitting.size() == 1;
  return made;
}

}  // namespace

Choice choose(TypeNames& names, const std::vector<Method>& methods, const Arguments& arguments,
              bool open) {
  if (!arguments.counted) return choose_by_name(methods);
  if (methods.size() > MOST_OVERLOADS) return choose_by_count(methods, arguments);
  Choice made;
  bool doubtful = false;  // an earlier phase may have settled it
  for (const Phase phase : {Phase::STRICT, Phase::LOOSE, Phase::VARIADIC}) {
    const Applicable found = applicable(names, methods, arguments, phase);
    if (found.empty()) continue;
    std::vector<const Method*> all = found.certain;
    all.insert(all.end(), found.possible.begin(), found.possible.end());
    const Method* best = most_specific(names, all, arguments, phase);
    const bool is_certain =
        std::find(found.certain.begin(), found.certain.end(), best) != found.certain.end();
    if (best == nullptr) best = most_specific(names, found.certain, arguments, phase);
    if (best != nullptr && !doubtful && is_certain) {
      made.fitting = {*best};
      made.sure = true;
      return made;
    }
    if (best != nullptr) append(made.fitting, {best});
    append(made.fitting, all);
    if (!found.certain.empty()) return made;
    doubtful = true;
  }
  // What compiles calls something: the only method that is left, unless others are out of sight.
  made.sure = made.fitting.size() == 1 && !open;
  return made;
}

}  // namespace context_delta::indexer::java
