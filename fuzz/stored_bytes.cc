#include <stdexcept>

#include "fuzz/require.h"
#include "indexer/model/facts.h"
#include "indexer/rows/compression.h"
#include "indexer/rows/packed.h"
#include "indexer/world/keys.h"
#include "indexer/world/name_table.h"

// What the index stores as bytes, damaged: an error or a value that can be stored again. The first
// byte says what it is, and whether it is compressed first.
using namespace context_delta;

namespace {

/// The first byte says how many hundredths are what other files may ask for; the rest are
/// references.
void read_facts(std::string_view bytes) {
  const std::size_t shared = fuzz::take_byte(bytes) % 101 * bytes.size() / 100;
  const indexer::Facts facts =
      indexer::decode_facts({.shared = std::string(bytes.substr(0, shared)),
                             .references = std::string(bytes.substr(shared))});
  fuzz::require(indexer::decode_facts(indexer::encode_facts(facts)) == facts, "facts are kept");
  indexer::name_hashes(facts);
  indexer::interface_hash(facts);
  const std::vector<indexer::Defined> definitions = indexer::defined(facts);
  indexer::NameTable table;
  table.add(0, definitions);
  table.add(1, definitions);
  table.sort();
  std::size_t found = 0;
  for (const indexer::Defined& each : definitions) {
    const auto [begin, end] = table.find(each.name);
    for (const auto* entry = begin; entry != end; ++entry) {
      found += definitions[static_cast<std::size_t>(entry->definition)].name == each.name;
    }
    fuzz::require(begin != end, "every name is found");
  }
  fuzz::require(found >= 2 * definitions.size(), "every definition is found by its name");
}

void read(unsigned kind, std::string_view bytes) {
  switch (kind % 4) {
    case 0:
      return read_facts(bytes);
    case 1: {
      const auto calls = indexer::unpack_calls(bytes);
      fuzz::require(indexer::unpack_calls(indexer::pack_calls(calls)) == calls, "calls are kept");
      return;
    }
    case 2: {
      const auto uses = indexer::unpack_uses(bytes);
      fuzz::require(indexer::unpack_uses(indexer::pack_uses(uses)) == uses, "uses are kept");
      return;
    }
    default: {
      indexer::StaleKeys stale;
      stale.add(7);
      stale.meet(bytes);
      indexer::decompressed(bytes);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes = fuzz::text_of(data, size);
  const unsigned kind = fuzz::take_byte(bytes);
  const std::string small = indexer::compressed(bytes);
  fuzz::require(indexer::decompressed(small) == bytes, "compression keeps bytes");
  try {
    read(kind, kind >= 128 ? std::string_view(small) : bytes);
  } catch (const std::runtime_error&) {
  }
  return 0;
}
