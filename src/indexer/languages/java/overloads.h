#pragma once

#include <string_view>
#include <vector>

#include "indexer/languages/java/members.h"
#include "indexer/languages/java/types.h"

/// Choosing among methods of one name by the types of the arguments.
namespace context_delta::indexer::java {

enum class Verdict { NO, MAYBE, YES };

/// Whether a value of a type can be passed to a parameter without boxing.
Verdict is_subtype(TypeNames& names, const Type& from, const Type& to);
/// The same, boxing and unboxing allowed.
Verdict converts(TypeNames& names, const Type& from, const Type& to);

/// What a call passes.
struct Arguments {
  std::vector<Type> types;
  bool counted = true;  ///< false: neither how many nor what (a method reference)
};

struct Choice {
  std::vector<Method> fitting;  ///< what the arguments leave open, the likeliest first
  bool sure = false;            ///< the first of them it is
};

/// The methods that a call may mean: those that apply without boxing, else with it, else with a
/// variable number of arguments; of several, the most specific one. `open` says that methods out
/// of sight may apply too.
Choice choose(TypeNames& names, const std::vector<Method>& methods, const Arguments& arguments,
              bool open);

}  // namespace context_delta::indexer::java
