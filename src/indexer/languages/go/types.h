#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/world/world.h"

/// Reading types as they are written.
namespace context_delta::indexer::go {

/// A type and where it is written, which says what its names mean.
struct Type {
  const File* file = nullptr;
  DefinitionIndex scope = NOWHERE;  ///< local types and type parameters are known in here
  std::string text;
  std::shared_ptr<const std::vector<Type>> arguments = {};  ///< what `$0`, `$1` stand for

  /// Another type written in the same place.
  Type with(std::string_view other) const { return {file, scope, std::string(other), arguments}; }
};

/// Without pointers and parentheses around it.
std::string_view without_pointers(std::string_view type);

/// The parts of a list, split at commas that stand outside all brackets.
std::vector<std::string_view> split_list(std::string_view list);

/// What indexing a slice, array or map yields; what a channel carries; nothing for other types.
std::optional<std::string_view> element_type(std::string_view type);
std::optional<std::string_view> channel_element(std::string_view type);
std::optional<std::string_view> map_key(std::string_view type);

/// The results of a function type: `T`, `(T, error)`, "" for none; nothing for other types.
std::optional<std::string_view> function_results(std::string_view type);
/// The parameters of a function type, without the parentheses around them.
std::optional<std::string_view> function_parameters(std::string_view type);

/// The type of the result with this number. Names of results are left out.
std::optional<std::string_view> result_type(std::string_view results, std::size_t number);

/// `List` and `int, string` of `List[int, string]`; the second is empty without type arguments.
/// The first is empty for a type that is no name.
struct NamedType {
  std::string_view name;
  std::string_view arguments;
};
NamedType named_type_of(std::string_view type);

}  // namespace context_delta::indexer::go
