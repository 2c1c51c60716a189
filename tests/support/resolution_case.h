#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/annotated_repository.h"

namespace context_delta::tests {

/// One rule or one thing that takes it away: the call at $call^ and the definition at $target^.
struct Case {
  const char* name;
  std::vector<std::pair<std::string, std::string>> files;
  std::string expected;  ///< as AnnotatedRepository::edge says it
};

inline void PrintTo(const Case& each, std::ostream* out) { *out << each.name; }

/// How the files of a case tie its call.
inline std::string tie_of(const Case& each) {
  AnnotatedRepository repository;
  for (const auto& [path, text] : each.files) repository.add(path, text);
  return repository.edge("call", "target");
}

}  // namespace context_delta::tests
