#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/languages/c_family/includes.h"
#include "indexer/world/world.h"

/// Which definition a plain function name is linked to.
namespace context_delta::indexer::c_family {

/// What a bare name means for a file, when it means one function or macro.
struct Linked {
  const Candidate* target = nullptr;  ///< null: nothing fits
  bool proven = false;
  std::string_view rule = {};
  std::string_view why = {};            ///< when not proven
  std::vector<Candidate> fitting = {};  ///< when not proven: all that may be meant
};

/// The view of one file.
class Linkage {
 public:
  Linkage(const File& file, World& world) : file_(file), world_(world), seen_(file, world) {}

  const IncludeClosure& seen() const { return seen_; }

  /// A function of C linkage rules among `candidates`, which are functions and macros of one name:
  /// defined in this file, in an included one, or once in the repository with a declaration in a
  /// header that both files include or that is the defining file's own by name.
  /// The doubts that the reference itself gives are taken up: conditions, casts, broken text.
  Linked find(const std::vector<Candidate>& candidates, const Reference& reference);

  /// Whether another file includes, directly or not, the file `header`.
  bool includes(const File& file, const File& header);

 private:
  Linked find_any(const std::vector<Candidate>& candidates, std::int16_t arguments);
  Linked find_definition(const std::vector<Candidate>& candidates, std::int16_t arguments);
  bool is_declared_for_both(const std::vector<Candidate>& candidates, const Candidate& definition);

  const File& file_;
  World& world_;
  IncludeClosure seen_;
  std::unordered_map<std::int64_t, IncludeClosure> closures_;
};

}  // namespace context_delta::indexer::c_family
