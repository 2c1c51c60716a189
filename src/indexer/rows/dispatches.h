#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "indexer/model/facts.h"
#include "storage/database.h"

namespace context_delta::indexer {

/// The dispatches of the index: sets of symbols any of which may run for a call. Each set is stored
/// once, whichever files' calls it stands for.
class Dispatches {
 public:
  explicit Dispatches(const storage::Database& database);

  void clear();
  /// The id of a set of symbol ids in ascending order, which is added when it is new.
  std::int64_t id_of(std::span<const std::int64_t> symbols);

  /// Gives the definitions of a file new numbers: `numbers[old index]` is the new index, or
  /// NOWHERE. A set that loses a member goes: all who call it are to be resolved again.
  void renumber(std::int64_t file, const std::vector<DefinitionIndex>& numbers);

  /// That a call has left the set.
  void leave(std::int64_t id) { left_.insert(id); }
  /// Removes the sets that were left and that no call names any more.
  void drop_unused();

 private:
  void store_members(std::int64_t id, std::span<const std::int64_t> symbols);
  void erase_members(std::int64_t id);
  std::vector<std::int64_t> members(std::int64_t id);

  const storage::Database& database_;
  storage::Statement find_, insert_, insert_target_, select_targets_, erase_targets_, is_called_,
      erase_;
  std::int64_t next_;  ///< id: none is given twice within an update
  std::set<std::int64_t> left_;
};

}  // namespace context_delta::indexer
