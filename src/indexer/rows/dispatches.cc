#include "indexer/rows/dispatches.h"

#include <algorithm>
#include <map>
#include <optional>

#include "indexer/model/varint.h"
#include "storage/schema.h"

namespace context_delta::indexer {
namespace {

using storage::Statement;
using storage::SYMBOL_BITS;
using storage::symbol_id;

/// The first id, then the difference from each to the next.
std::string packed(std::span<const std::int64_t> symbols) {
  std::string bytes;
  std::int64_t last = 0;
  for (const std::int64_t symbol : symbols) {
    append_number(bytes, static_cast<std::uint64_t>(symbol - last));
    last = symbol;
  }
  return bytes;
}

/// The symbol's new id; none when its definition is no more.
std::optional<std::int64_t> renumbered(std::int64_t symbol, std::int64_t file,
                                       const std::vector<DefinitionIndex>& numbers) {
  if (symbol >> SYMBOL_BITS != file) return symbol;
  const auto index = static_cast<std::size_t>((symbol & storage::MOST_SYMBOLS) - 1);
  if (index >= numbers.size() || numbers[index] == NOWHERE) return std::nullopt;
  return symbol_id(file, numbers[index] + 1);
}

}  // namespace

Dispatches::Dispatches(const storage::Database& database)
    : database_(database),
      find_(database, "SELECT id FROM dispatches WHERE symbols = ?1"),
      insert_(database, "INSERT INTO dispatches VALUES(?1, ?2)"),
      insert_target_(database, "INSERT INTO targets VALUES(?1, ?2)"),
      select_targets_(database, "SELECT symbol FROM targets WHERE dispatch = ?1 ORDER BY symbol"),
      erase_targets_(database, "DELETE FROM targets WHERE dispatch = ?1"),
      is_called_(database, "SELECT 1 FROM calls WHERE callee = -?1 LIMIT 1"),
      erase_(database, "DELETE FROM dispatches WHERE id = ?1"),
      next_(database.integer("SELECT coalesce(max(id), 0) + 1 FROM dispatches")) {}

void Dispatches::clear() { database_.execute("DELETE FROM dispatches; DELETE FROM targets"); }

std::int64_t Dispatches::id_of(std::span<const std::int64_t> symbols) {
  const std::string key = packed(symbols);
  const bool known = find_.bind_blob(1, key).step();
  const std::int64_t found = known ? find_.integer(0) : 0;
  find_.reset();
  if (known) return found;
  const std::int64_t id = next_++;
  insert_.bind(1, id).bind_blob(2, key).run();
  store_members(id, symbols);
  return id;
}

void Dispatches::renumber(std::int64_t file, const std::vector<DefinitionIndex>& numbers) {
  Statement row(database_,
                "SELECT DISTINCT dispatch FROM targets WHERE symbol >= ?1 AND symbol < ?2");
  row.bind(1, symbol_id(file, 0)).bind(2, symbol_id(file + 1, 0));
  std::map<std::int64_t, std::vector<std::int64_t>> changed;
  while (row.step()) {
    const std::int64_t id = row.integer(0);
    std::vector<std::int64_t> after;
    const std::vector<std::int64_t> before = members(id);
    for (const std::int64_t symbol : before) {
      if (const auto number = renumbered(symbol, file, numbers)) after.push_back(*number);
    }
    if (after.size() < before.size()) after.clear();
    std::sort(after.begin(), after.end());
    if (after != before) changed.emplace(id, std::move(after));
  }
  // All old sets go before the first new one comes: a new one may be another's old one.
  for (const auto& [id, symbols] : changed) erase_members(id);
  for (const auto& [id, symbols] : changed) {
    if (symbols.empty()) continue;
    insert_.bind(1, id).bind_blob(2, packed(symbols)).run();
    store_members(id, symbols);
  }
}

void Dispatches::drop_unused() {
  for (const std::int64_t id : left_) {
    const bool called = is_called_.bind(1, id).step();
    is_called_.reset();
    if (!called) erase_members(id);
  }
  left_.clear();
}

void Dispatches::store_members(std::int64_t id, std::span<const std::int64_t> symbols) {
  for (const std::int64_t symbol : symbols) insert_target_.bind(1, symbol).bind(2, id).run();
}

void Dispatches::erase_members(std::int64_t id) {
  erase_targets_.bind(1, id).run();
  erase_.bind(1, id).run();
}

std::vector<std::int64_t> Dispatches::members(std::int64_t id) {
  std::vector<std::int64_t> symbols;
  select_targets_.bind(1, id);
  while (select_targets_.step()) symbols.push_back(select_targets_.integer(0));
  select_targets_.reset();
  return symbols;
}

}  // namespace context_delta::indexer
