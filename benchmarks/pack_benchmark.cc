#include <string>

#include <benchmark/benchmark.h>

#include "component/scripted_services.h"
#include "tool_handlers/context_delta/context_delta.h"

namespace context_delta {
namespace {

test::World world_of(std::int64_t files) {
  test::World world;
  for (std::int64_t i = 0; i < files; ++i) {
    const std::string path = "src/module_" + std::to_string(i * 7919 % files) + "/file.py";
    world.changes.files.push_back({path, "modified", i % 50, i % 7});
    world.impact[path] = {i % 97, i % 11, "python"};
    world.spans[path] = {{1, 5}, {9, 9}};
    if (world.symbols.size() < 1000) {
      world.symbols.push_back(
          {.id = {i}, .path = path, .fqn = "module.function", .name = "function"});
      world.proven.push_back({.of = {i}, .fqn = "module.caller", .name = "caller", .path = path});
    }
  }
  world.symbol_total = static_cast<std::int64_t>(world.symbols.size());
  return world;
}

/// The component alone: the services answer from memory (writing down what they are asked).
void PackAssembly(benchmark::State& state) {
  const test::World world = world_of(state.range(0));
  for (auto _ : state) {
    test::ScriptedServices services(world);
    benchmark::DoNotOptimize(handle_build_delta_context_pack(
        services, {.repository = {{"db"}}, .repo_root = {"root"}, .token_budget = 16000}));
  }
}
BENCHMARK(PackAssembly)->Arg(10)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace context_delta
