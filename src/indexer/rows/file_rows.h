#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/model/resolution.h"
#include "indexer/rows/packed.h"

/// What the index holds of one resolved file.
namespace context_delta::indexer {

struct FileRows {
  struct Scope {
    std::string container;
    std::string qualifier;
    bool whole = false;  ///< the qualifier is the whole qualified name
    friend bool operator==(const Scope&, const Scope&) = default;
  };
  struct Segment {
    std::int32_t first_line = 1;
    std::int32_t last_line = 1;
    DefinitionIndex definition = NOWHERE;
  };
  struct Call {
    DefinitionIndex caller = NOWHERE;
    std::int32_t line = 1;
    std::int64_t callee = 0;     ///< id of the symbol; 0 of a dispatched call
    std::int32_t dispatch = -1;  ///< index in `dispatches`, in place of a callee
    bool proven = false;
    std::string_view rule;
    std::string_view why;
    std::int32_t candidates = 1;
    std::int32_t rank = 0;
  };

  std::shared_ptr<const Facts> facts;
  std::vector<Scope> scopes;             ///< the first is the file's own
  std::vector<std::uint32_t> scopes_of;  ///< for each definition, its scope
  std::vector<Segment> segments;
  std::vector<Call> calls;
  std::vector<std::vector<std::int64_t>> dispatches;  ///< ids of symbols, in order
  std::vector<Use> uses;                              ///< by file
  std::vector<std::uint32_t> dependencies;
  std::int64_t symbols = 0;  ///< definitions of change kinds
};

/// Rows from facts and what the rules made of them.
FileRows file_rows(const File& file, std::shared_ptr<const Facts> facts,
                   const Resolution& resolution);

/// Whether changed lines of this kind of definition make it a changed symbol.
bool is_change_kind(Kind kind);

}  // namespace context_delta::indexer
