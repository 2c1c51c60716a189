#include <string>

#include <benchmark/benchmark.h>

#include "utils/json.h"
#include "utils/text_lines.h"
#include "workers/context_builder.h"

namespace context_delta {
namespace {

json::Mapping symbol_row() {
  return {{"fqn", "storage.repository.Repository.callers_of"},
          {"name", "callers_of"},
          {"kind", "method"},
          {"file", "src/storage/repository.cc"},
          {"line", 128},
          {"end_line", 176},
          {"status", "modified"},
          {"signature",
           "std::vector<Caller> callers_of(std::span<const std::int64_t> ids, bool "
           "guessed, std::int64_t limit) const"}};
}

std::string source_text() {
  std::string text;
  for (int i = 0; i < 20000; ++i) {
    text += "  const auto found = lookup(impact, field::path(change));  // caf\xC3\xA9\n";
  }
  return text;
}

void count_bytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void JsonTextOfARow(benchmark::State& state) {
  const json::Mapping row = symbol_row();
  for (auto _ : state) benchmark::DoNotOptimize(json_text(row));
  count_bytes(state, json_text(row).size());
}
BENCHMARK(JsonTextOfARow);

void EstimateTokensOfARow(benchmark::State& state) {
  const std::string text = json_text(symbol_row());
  for (auto _ : state) benchmark::DoNotOptimize(context_builder::estimate_tokens(text));
  count_bytes(state, text.size());
}
BENCHMARK(EstimateTokensOfARow);

void EstimateTokensOfAText(benchmark::State& state) {
  const std::string text = source_text();
  for (auto _ : state) benchmark::DoNotOptimize(context_builder::estimate_tokens(text));
  count_bytes(state, text.size());
}
BENCHMARK(EstimateTokensOfAText)->Unit(benchmark::kMillisecond);

void SplitLines(benchmark::State& state) {
  const std::string text = source_text();
  for (auto _ : state) benchmark::DoNotOptimize(text_lines::split_lines(text));
  count_bytes(state, text.size());
}
BENCHMARK(SplitLines)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace context_delta
