// What an exchange with a sensor costs beside its floor, the 50 ms that every exchange waits for stale input;
// and what a firmware package costs beside its pieces sent as plain exchanges.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "simulator/src/simulated_sensor.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kIdentityCommand = 0x07;
constexpr std::size_t kPieceSize = 1024;

/// A client that is connected to a simulated sensor.
struct Bench {
  Bench() : sensor({.table_path = VARKEL_TABLES "/Quenta.csv"}) {
    sensor.Start();
    client = std::make_unique<quarn::lidar::KtcClient>("127.0.0.1", sensor.port(), false, 0, 1, "", "", "",
                                                       4000, 4000, 5.0F, std::uint16_t{0});
    while (!client->IsOpen()) std::this_thread::yield();
  }

  varkel::sim::SimulatedSensor sensor;
  std::unique_ptr<quarn::lidar::KtcClient> client;
};

void BM_ExchangeWithSensor(benchmark::State& state) {
  const Bench bench;
  Bytes reply;
  for (auto _ : state) {
    if (bench.client->QueryCommand({}, reply, kIdentityCommand) != 0) state.SkipWithError("refused");
  }
  state.counters["exchanges/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ExchangeWithSensor)->Unit(benchmark::kMillisecond)->UseRealTime();

/// As many exchanges as a package of that size has pieces, each with a piece's bytes.
void BM_PiecesAsExchanges(benchmark::State& state) {
  const Bench bench;
  const Bytes piece(kPieceSize, 0x5A);
  Bytes reply;
  for (auto _ : state) {
    for (std::int64_t i = 0; i < state.range(0); ++i)
      bench.client->QueryCommand(piece, reply, kIdentityCommand);
  }
}
BENCHMARK(BM_PiecesAsExchanges)->Arg(64)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

void BM_FileTransfer(benchmark::State& state) {
  const Bench bench;
  const Bytes package(static_cast<std::size_t>(state.range(0)) * kPieceSize, 0x5A);
  for (auto _ : state) {
    std::atomic<std::uint32_t> progress = 0;
    std::string command = "0x60";
    if (bench.client->TransferFileByCmdText(package, command, progress) != 0) state.SkipWithError("refused");
  }
  state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(kPieceSize));
}
BENCHMARK(BM_FileTransfer)->Arg(64)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
