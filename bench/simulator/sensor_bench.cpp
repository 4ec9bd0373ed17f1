// The cost of sending a firmware package, compared with its pieces sent as plain exchanges, in milliseconds.

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "simulator/src/simulated_sensor.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

using Clock = std::chrono::steady_clock;

constexpr std::uint8_t kAnyCommand = 0x07;
constexpr std::size_t kPieceSize = 1024;

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

/// A client connected to a simulated sensor.
struct ConnectedClient {
  ConnectedClient() : sensor({.table_path = VARKEL_TABLES "/Quenta.csv"}) {
    sensor.Start();
    client = std::make_unique<quarn::lidar::KtcClient>("127.0.0.1", sensor.port(), false, 0, 1, "", "", "",
                                                       4000, 4000, 5.0F, std::uint16_t{0});
    while (!client->IsOpen()) std::this_thread::yield();
  }

  varkel::sim::SimulatedSensor sensor;
  std::unique_ptr<quarn::lidar::KtcClient> client;
};

// Alternately a package in pieces, and plain exchanges equal in number and size to the pieces.
void BM_FileTransfer(benchmark::State& state) {
  const ConnectedClient connected;
  const Bytes package(static_cast<std::size_t>(state.range(0)) * kPieceSize, 0x5A);
  const Bytes piece(kPieceSize, 0x5A);
  Bytes reply;
  double transfer = 0;
  double exchanges = 0;
  for ([[maybe_unused]] auto _ : state) {
    std::atomic<std::uint32_t> progress = 0;
    std::string command = "0x60";
    const auto start = Clock::now();
    const int code = connected.client->TransferFileByCmdText(package, command, progress);
    if (code != 0) state.SkipWithError("refused");
    const auto sent = Clock::now();
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      connected.client->QueryCommand(piece, reply, kAnyCommand);
    }
    transfer += Milliseconds(sent - start);
    exchanges += Milliseconds(Clock::now() - sent);
  }
  state.counters["transfer"] = transfer / static_cast<double>(state.iterations());
  state.counters["exchanges"] = exchanges / static_cast<double>(state.iterations());
}
BENCHMARK(BM_FileTransfer)->Arg(16)->Arg(128)->Arg(1024)->Repetitions(1)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
