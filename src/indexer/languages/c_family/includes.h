#pragma once

#include <string_view>
#include <unordered_set>
#include <vector>

#include "indexer/world/world.h"

/// What a file of C or C++ sees through its #include lines.
namespace context_delta::indexer::c_family {

/// The file of the repository that an include means, null when none or several could be meant.
/// `written` has its quotes or angle brackets. Quoted paths are looked up from the includer's
/// folder first; then the path must be the end of exactly one path in the repository. Angle
/// brackets mean the repository only with a folder in the path: `<name.h>` alone is the system's.
const File* included_file(const File& includer, std::string_view written, World& world);

/// The files that a file includes itself.
const std::vector<const File*>& direct_includes(const File& file, World& world);

/// Ids of the file and all that it includes, directly or not.
class IncludeClosure {
 public:
  IncludeClosure(const File& file, World& world);
  bool contains(const File& file) const { return ids_.contains(file.id); }
  const std::unordered_set<std::int64_t>& ids() const { return ids_; }
  const std::vector<const File*>& files() const { return files_; }

 private:
  std::unordered_set<std::int64_t> ids_;
  std::vector<const File*> files_;
};

/// Whether a language belongs to the family whose files call each other.
bool is_family(std::string_view language);

}  // namespace context_delta::indexer::c_family
