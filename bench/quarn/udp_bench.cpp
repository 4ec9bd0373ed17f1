#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

#include "libquarn/Platform/src/socket.h"
#include "libquarn/Source/src/socket_source.h"
#include "simulator/src/datagram_stream.h"
#include "simulator/src/stream_tally.h"

// The simulated sensor's datagrams over the loopback interface: how much of a stream SocketSource receives,
// and how fast, compared with a bare loop of recvfrom calls on a socket with the same buffer.

namespace quarn::lidar {
namespace {

using Clock = std::chrono::steady_clock;
using varkel::sim::DatagramStream;
using varkel::sim::StreamTally;

constexpr char kLoopback[] = "127.0.0.1";
constexpr std::size_t kDatagramSize = 1500;
constexpr std::uint64_t kDatagrams = 50'000;
constexpr std::uint32_t kReceiveBuffer = 25U * 1024 * 1024;
constexpr std::chrono::microseconds kPatience{200'000};

std::uint16_t FreePort() {
  const platform::SocketHandle socket = platform::CreateUdpSocket();
  platform::BindDatagramPort(socket, kLoopback, 0, "");
  const std::uint16_t port = platform::LocalPort(socket);
  platform::CloseSocket(socket);
  return port;
}

// A stream ends with its last datagram, or after a pause if that one was lost.
template <typename Receive>
void Measure(benchmark::State& state, std::uint16_t port, const Receive& receive) {
  std::uint64_t received = 0;
  std::uint64_t disordered = 0;
  std::uint64_t refused = 0;
  double seconds = 0;
  for ([[maybe_unused]] auto _ : state) {
    StreamTally tally;
    const DatagramStream stream({.address = kLoopback,
                                 .port = port,
                                 .size = kDatagramSize,
                                 .rate = static_cast<double>(state.range(0)),
                                 .count = kDatagrams});
    std::optional<Clock::time_point> first;
    Clock::time_point latest;
    while (tally.last() != kDatagrams && receive(tally)) {
      latest = Clock::now();
      first = first.value_or(latest);
    }
    const std::chrono::duration<double> elapsed = first ? latest - *first : Clock::duration::zero();
    state.SetIterationTime(elapsed.count());
    seconds += elapsed.count();
    received += tally.received();
    disordered += tally.disordered();
    refused += stream.refused();
  }
  const double sent = static_cast<double>(state.iterations()) * static_cast<double>(kDatagrams);
  state.counters["received/s"] = static_cast<double>(received) / seconds;
  state.counters["lost_percent"] = 100.0 * (sent - static_cast<double>(received)) / sent;
  state.counters["disordered"] = static_cast<double>(disordered);
  state.counters["refused"] = static_cast<double>(refused);
}

void BM_SocketSource(benchmark::State& state) {
  const std::uint16_t port = FreePort();
  SocketSource source(port, kLoopback, "");
  source.Open();
  UdpPacket packet;
  Measure(state, port, [&](StreamTally& tally) {
    for (;;) {
      const int received = source.Receive(packet, kMaxPacketSize, 0, static_cast<int>(kPatience.count()));
      if (received > 0) {
        tally.Count(std::span(packet.data).first(static_cast<std::size_t>(received)));
        return true;
      }
      if (packet.timed_out) {
        return false;
      }
    }
  });
}

// A socket that blocks in recvfrom: the fewest system calls possible per datagram.
void BM_BareReceiveFrom(benchmark::State& state) {
  const std::uint16_t port = FreePort();
  const platform::SocketHandle socket = platform::CreateUdpSocket();
  platform::SetReceiveBufferSize(socket, kReceiveBuffer);
  platform::SetSocketReceiveTimeout(socket,
                                    static_cast<std::uint32_t>(kPatience / std::chrono::milliseconds(1)));
  platform::BindDatagramPort(socket, kLoopback, port, "");
  std::array<std::uint8_t, kMaxPacketSize> buffer{};
  Measure(state, port, [&](StreamTally& tally) {
    platform::Endpoint sender;
    const int received = platform::ReceiveDatagram(socket, buffer, 0, sender);
    if (received > 0) {
      tally.Count(std::span(buffer).first(static_cast<std::size_t>(received)));
    }
    return received > 0;
  });
  platform::CloseSocket(socket);
}

// Datagrams per second: 130 Mbit/s, four times as many, and as fast as the sender can.
void Rates(benchmark::internal::Benchmark* bench) {
  bench->Arg(10'833)->Arg(43'333)->Arg(0)->UseManualTime()->Repetitions(5)->Iterations(1);
}
BENCHMARK(BM_BareReceiveFrom)->Apply(Rates);
BENCHMARK(BM_SocketSource)->Apply(Rates);

}  // namespace
}  // namespace quarn::lidar

BENCHMARK_MAIN();
