#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Types that a documentation comment gives.
namespace context_delta::indexer::ecmascript {

struct Documentation {
  std::vector<std::pair<std::string, std::string>> parameters;  ///< name, type
  std::vector<std::pair<std::string, std::string>> types;       ///< `@typedef`: name, type
  std::string type;                                             ///< `@type`
  std::string returns;

  /// The type of a parameter; empty when none is given.
  std::string_view parameter(std::string_view name) const;
};

/// What a `/** ... */` comment says; nothing for other comments. Types are written as in
/// TypeScript: without `?`, `!` and `=`, `Array.<T>` as `Array<T>`.
Documentation read_documentation(std::string_view comment);

}  // namespace context_delta::indexer::ecmascript
