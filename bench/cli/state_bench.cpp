// The cost of comparing two states.

#include <benchmark/benchmark.h>

#include <string>

#include "VarkelCore/src/state/state_compare.h"

namespace {

varkel::SensorState StateOf(std::int64_t count, std::int64_t changed) {
  varkel::SensorState state;
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string text = std::to_string(i % 100 < changed ? -i : i);
    state.values.push_back({std::to_string(i / 20) + "-" + std::to_string(i), "Variable " + std::to_string(i),
                            "Page", "Group", "mm", text, "00 01 02 03"});
  }
  return state;
}

void BM_CompareStates(benchmark::State& state) {
  const varkel::SensorState left = StateOf(state.range(0), 0);
  const varkel::SensorState right = StateOf(state.range(0), 1);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(varkel::CompareStates(left, right));
}
BENCHMARK(BM_CompareStates)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
