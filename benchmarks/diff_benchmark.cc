#include <string>
#include <string_view>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "workers/diff_parser.h"

namespace context_delta::git_history {
namespace {

constexpr std::size_t FILES = 200;
constexpr std::size_t READ_BYTES = 256 * 1024;  // what one read of a pipe gives at most

std::string object_of(std::size_t file, char first) {
  const std::string number = std::to_string(file);
  return std::string(1, first) + std::string(39 - number.size(), '0') + number;
}

/// A diff of 200 files of about `bytes` in all, with `lines` changed lines in each hunk.
std::string diff_of(std::size_t bytes, std::size_t lines) {
  const std::string line = "  const auto found = lookup(impact, x);\n";
  std::string records, hunk, patch;
  for (std::size_t i = 0; i < lines; ++i) hunk += (i % 2 == 0 ? "+" : "-") + line;
  const std::string count = std::to_string(lines / 2);
  for (std::size_t file = 0; file < FILES; ++file) {
    const std::string path = "src/module/file_" + std::to_string(file) + ".cc";
    const std::string old_object = object_of(file, 'a'), new_object = object_of(file, 'b');
    records += ":100644 100644 " + old_object + " " + new_object + " M";
    records += '\0' + path + '\0';
    patch += "diff --git a/" + path + " b/" + path + "\nindex " + old_object + ".." + new_object +
             " 100644\n--- a/" + path + "\n+++ b/" + path + "\n";
    for (std::size_t size = 0, at = 1; size < bytes / FILES; size += hunk.size(), at += lines) {
      const std::string range = std::to_string(at) + "," + count;
      patch += "@@ -" + range + " +" + range + " @@ int main() {\n" + hunk;
    }
  }
  return records + '\0' + patch;
}

/// Megabytes of diff and lines of each hunk. `heap` is what the parser holds at the end.
void ParseDiff(benchmark::State& state) {
  const std::string diff = diff_of(static_cast<std::size_t>(state.range(0)) << 20,
                                   static_cast<std::size_t>(state.range(1)));
  std::size_t heap = 0;
  for (auto _ : state) {
    const std::size_t before = mallinfo2().uordblks;
    DiffParser parser;
    for (std::string_view rest = diff; !rest.empty();) {
      parser.feed(rest.substr(0, READ_BYTES));
      rest.remove_prefix(std::min(rest.size(), READ_BYTES));
    }
    heap = mallinfo2().uordblks - before;
    benchmark::DoNotOptimize(parser.finish());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(diff.size()) * state.iterations());
  state.counters["heap"] = benchmark::Counter(
      static_cast<double>(heap), benchmark::Counter::kDefaults, benchmark::Counter::OneK::kIs1024);
}
BENCHMARK(ParseDiff)
    ->ArgNames({"MB", "lines"})
    ->Args({1, 100})
    ->Args({10, 1000})
    ->Args({100, 10'000})
    ->Args({100, 20})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace context_delta::git_history
