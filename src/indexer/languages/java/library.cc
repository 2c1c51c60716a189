#include "indexer/languages/java/library.h"

#include <algorithm>
#include <array>
#include <vector>

#include "indexer/languages/java/tables.h"
#include "indexer/languages/kit/text.h"
#include "indexer/languages/kit/words.h"

namespace context_delta::indexer::java {
const LibraryType* library_type(std::string_view name) {
  const std::span<const LibraryType> all = library_types();
  const auto found = std::lower_bound(
      all.begin(), all.end(), name,
      [](const LibraryType& each, std::string_view wanted) { return each.name < wanted; });
  return found == all.end() || found->name != name ? nullptr : &*found;
}

const LibraryType* library_type_of(std::string_view qualified_name) {
  std::size_t start = 0;
  while (start < qualified_name.size() &&
         !(qualified_name[start] >= 'A' && qualified_name[start] <= 'Z')) {
    const std::size_t dot = qualified_name.find('.', start);
    if (dot == std::string_view::npos) return nullptr;
    start = dot + 1;
  }
  const LibraryType* found = library_type(qualified_name.substr(start));
  const bool same =
      found != nullptr && start > 0 && qualified_name.substr(0, start - 1) == found->package;
  return same ? found : nullptr;
}

bool is_library_subtype(const LibraryType& type, const LibraryType& supertype) {
  if (supertype.name == "Object") return true;
  std::vector<const LibraryType*> pending = {&type};
  while (!pending.empty()) {
    const LibraryType* each = pending.back();
    pending.pop_back();
    if (each == &supertype) return true;
    for (const std::string_view name : kit::split(each->supertypes, ' ')) {
      const LibraryType* above = library_type(name);
      if (above != nullptr) pending.push_back(above);
    }
  }
  return false;
}

std::string_view library_member(const LibraryType& type, std::string_view member) {
  for (const LibraryType* each = &type; each != nullptr;) {
    for (const std::string_view entry : kit::split(each->members, ' ')) {
      const std::size_t colon = entry.find(':');
      if (entry.substr(0, colon) == member) return entry.substr(colon + 1);
    }
    // Only superclasses without type arguments of their own can hand theirs down unchanged.
    const std::string_view above = each->supertypes.substr(0, each->supertypes.find(' '));
    const LibraryType* next = library_type(above);
    const bool generic = next != nullptr && next->members.find(":0") != std::string_view::npos;
    if (next == nullptr && each->name != "Object") next = library_type("Object");
    each = generic ? library_type("Object") : next;
  }
  return {};
}

bool is_common_method(std::string_view name) { return kit::has_word(COMMON_METHODS, name); }

}  // namespace context_delta::indexer::java
