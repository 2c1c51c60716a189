#include <iterator>

#include "fuzz/require.h"
#include "indexer/parse/parsing.h"
#include "indexer/rows/catalogue.h"
#include "indexer/rows/file_rows.h"
#include "languages/sound_facts.h"
#include "support/memory_source.h"

// A text of any language: the first byte says which, by the name of the file.
using namespace context_delta;

namespace {

constexpr const char* NAMES[] = {
    "a.py",   "a.c",        "a.h",           "a.cc",         "a.go",
    "go.mod", "src/lib.rs", "a.java",        "a.js",         "a.jsx",
    "a.ts",   "a.tsx",      "Cargo.toml",    "a.mjs",        "a.d.ts",
    "a.hpp",  "a.cts",      "tsconfig.json", "package.json", "pnpm-workspace.yaml"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static indexer::TextParser parser(nullptr);
  std::string_view text = fuzz::text_of(data, size);
  const std::string path = NAMES[fuzz::take_byte(text) % std::size(NAMES)];
  const auto claimants = indexer::claimants(indexer::languages(), path);
  const indexer::ParsedText parsed = parser.parse(claimants, text);
  if (parsed.language == nullptr || parsed.problem) return 0;
  const std::string fault = tests::fault_of(parsed.facts);
  fuzz::require(fault.empty(), fault);
  tests::MemorySource source;
  source.add(path, *parsed.language, parsed.facts);
  const indexer::Resolution resolution = source.resolve(path);
  fuzz::require(resolution.qualified_names.size() == parsed.facts.definitions.size(),
                "every definition has a qualified name");
  const auto& entry = source.files().at(path);
  indexer::file_rows(entry.file, entry.facts, resolution);
  return 0;
}
