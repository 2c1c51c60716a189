#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/memory_source.h"

namespace context_delta::tests {

/// A text in which `$name^` marks the place that follows it, and the text without its marks.
struct AnnotatedText {
  explicit AnnotatedText(std::string_view marked);
  std::string text;
  std::map<std::string, std::int32_t> lines;  ///< line of each mark
  std::map<std::string, std::string> words;   ///< the identifier behind each mark
};

/// Files whose texts carry marks, and what resolution says between two of them.
class AnnotatedRepository {
 public:
  void add(const std::string& path, std::string_view marked);

  /// How the call at `call` is tied to the definition at `target`: "proven RULE",
  /// "guessed RULE: WHY (of CANDIDATES)", or "no edge".
  std::string edge(const std::string& call, const std::string& target);

  /// Every tie of the call at `call`: "proven path:line" or "guessed path:line", in order.
  std::vector<std::string> edges(const std::string& call);

  MemorySource& source() { return source_; }

 private:
  struct Place {
    std::string path;
    std::int32_t line = 0;
    std::string word;
  };
  const indexer::Definition& definition_of(const indexer::Place& place) const;
  std::vector<indexer::Edge> edges_at(const Place& place);

  MemorySource source_;
  std::map<std::string, Place> places_;
};

/// One line per definition: `kind qualified.name first-last @name_line [arguments] {traits}
/// signature`.
std::string describe_definitions(const MemorySource::Entry& entry,
                                 const std::vector<std::string>& qualified_names);

/// One line per reference: `line role receiver|name(arguments) in enclosing`.
std::string describe_references(const indexer::Facts& facts);

/// One line per binding and import.
std::string describe_bindings(const indexer::Facts& facts);

}  // namespace context_delta::tests
