// Loading a model's table, compared with libcsv alone on the same file and with the same settings: once with
// callbacks that only count, and once with callbacks that keep the cells.

#include <benchmark/benchmark.h>
#include <csv.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "bench/catalogue/big_table.h"

namespace varkel::bench {
namespace {

constexpr std::size_t kBlockSize = 65536;

const std::string& TablePath(const benchmark::State& state) {
  static std::map<std::int64_t, BigTable> tables;
  return tables.try_emplace(state.range(0), static_cast<std::size_t>(state.range(0))).first->second.path();
}

/// Processor time of this thread in seconds: other work on the machine doesn't count.
double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Work after the load, such as freeing all records, is not measured.
void BM_TableLoad(benchmark::State& state) {
  const std::string& path = TablePath(state);
  for ([[maybe_unused]] auto _ : state) {
    const double start = ThreadSeconds();
    ConfigParser catalogue(path);
    if (!catalogue.ExtractConfigInfo()) {
      state.SkipWithError("not loaded");
    }
    state.SetIterationTime(ThreadSeconds() - start);
  }
}

int KeepSpaces(unsigned char /*character*/) {
  return 0;
}

template <typename OnCell>
void ParseAlone(benchmark::State& state, void (*on_cell)(void*, std::size_t, void*), OnCell make) {
  const std::string& path = TablePath(state);
  std::vector<char> block(kBlockSize);
  for ([[maybe_unused]] auto _ : state) {
    auto kept = make();
    const double start = ThreadSeconds();
    csv_parser parser;
    csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI);
    csv_set_space_func(&parser, KeepSpaces);
    std::ifstream file(path, std::ios::binary);
    while (file) {
      file.read(block.data(), static_cast<std::streamsize>(block.size()));
      csv_parse(&parser, block.data(), static_cast<std::size_t>(file.gcount()), on_cell, nullptr, &kept);
    }
    csv_fini(&parser, on_cell, nullptr, &kept);
    state.SetIterationTime(ThreadSeconds() - start);
    csv_free(&parser);
    benchmark::DoNotOptimize(kept);
  }
}

void BM_LibcsvAlone(benchmark::State& state) {
  ParseAlone(
      state, [](void* /*cell*/, std::size_t /*size*/, void* cells) { ++*static_cast<std::size_t*>(cells); },
      [] { return std::size_t{0}; });
}

void BM_LibcsvKeepingCells(benchmark::State& state) {
  ParseAlone(
      state,
      [](void* cell, std::size_t size, void* cells) {
        static_cast<std::vector<std::string>*>(cells)->emplace_back(static_cast<const char*>(cell), size);
      },
      [] { return std::vector<std::string>(); });
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(100)->Arg(10'000)->Arg(100'000)->UseManualTime()->Unit(benchmark::kMicrosecond);
}
BENCHMARK(BM_LibcsvAlone)->Apply(Sizes);
BENCHMARK(BM_LibcsvKeepingCells)->Apply(Sizes);
BENCHMARK(BM_TableLoad)->Apply(Sizes);

}  // namespace
}  // namespace varkel::bench

BENCHMARK_MAIN();
