#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <thread>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/socket.h"
#include "libquarn/Source/src/socket_source.h"

// Datagrams over the loopback interface, numbered from 1 in their first four bytes: what SocketSource gets of
// a stream, and how fast, next to a bare loop of receive-from calls on a socket with the same buffer.

namespace quarn::lidar {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kLoopback[] = "127.0.0.1";
constexpr std::size_t kDatagramSize = 1500;
constexpr std::uint32_t kDatagrams = 50'000;
constexpr std::uint32_t kReceiveBuffer = 25U * 1024 * 1024;
constexpr std::chrono::microseconds kPatience{200'000};

std::uint16_t FreePort() {
  const platform::SocketHandle socket = platform::CreateUdpSocket();
  platform::BindDatagramPort(socket, kLoopback, 0, "");
  const std::uint16_t port = platform::LocalPort(socket);
  platform::CloseSocket(socket);
  return port;
}

/// Sends the numbered datagrams on a thread of its own, at a rate or (0) as fast as it goes.
class Sender {
 public:
  Sender(std::uint16_t port, std::int64_t per_second)
      : thread_([this, port, per_second] { Run(port, per_second); }) {}
  ~Sender() { thread_.join(); }
  Sender(const Sender&) = delete;
  Sender& operator=(const Sender&) = delete;

  std::uint32_t refused() const { return refused_; }

 private:
  void Run(std::uint16_t port, std::int64_t per_second) {
    const platform::SocketHandle socket = platform::CreateUdpSocket();
    const platform::Endpoint to{*platform::ParseIpV4(kLoopback), port};
    std::array<std::uint8_t, kDatagramSize> datagram{};
    const auto start = Clock::now();
    for (std::uint32_t number = 1; number <= kDatagrams; ++number) {
      if (per_second != 0) {
        const auto due = start + std::chrono::nanoseconds(1'000'000'000 / per_second) * number;
        while (Clock::now() < due) {
          std::this_thread::yield();
        }
      }
      StoreBigEndian<std::uint32_t>(datagram, 0, number);
      if (platform::SendDatagram(socket, datagram, 0, to) < 0) {
        ++refused_;
      }
    }
    platform::CloseSocket(socket);
  }

  std::atomic<std::uint32_t> refused_{0};
  std::thread thread_;  // last: everything stands when it starts
};

/// What a receiver saw of one stream.
struct Tally {
  std::uint32_t received = 0;
  std::uint32_t last = 0;
  std::uint32_t disordered = 0;

  void Count(std::span<const std::uint8_t> datagram) {
    const auto number = LoadBigEndian<std::uint32_t>(datagram, 0);
    disordered += number > last ? 0U : 1U;
    last = number;
    ++received;
  }
};

// A stream is over with its last datagram, or when nothing came for a while because that one was lost.
template <typename Receive>
void Measure(benchmark::State& state, std::uint16_t port, const Receive& receive) {
  std::uint64_t received = 0;
  std::uint64_t disordered = 0;
  std::uint64_t refused = 0;
  double seconds = 0;
  for ([[maybe_unused]] auto _ : state) {
    Tally tally;
    const Sender sender(port, state.range(0));
    std::optional<Clock::time_point> first;
    Clock::time_point latest;
    while (tally.last != kDatagrams && receive(tally)) {
      latest = Clock::now();
      first = first.value_or(latest);
    }
    const std::chrono::duration<double> elapsed = first ? latest - *first : Clock::duration::zero();
    state.SetIterationTime(elapsed.count());
    seconds += elapsed.count();
    received += tally.received;
    disordered += tally.disordered;
    refused += sender.refused();
  }
  const double sent = static_cast<double>(state.iterations()) * kDatagrams;
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
  Measure(state, port, [&](Tally& tally) {
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

// A socket that blocks in receive-from: the fewest system calls that a datagram can cost.
void BM_BareReceiveFrom(benchmark::State& state) {
  const std::uint16_t port = FreePort();
  const platform::SocketHandle socket = platform::CreateUdpSocket();
  platform::SetReceiveBufferSize(socket, kReceiveBuffer);
  platform::SetSocketReceiveTimeout(socket,
                                    static_cast<std::uint32_t>(kPatience / std::chrono::milliseconds(1)));
  platform::BindDatagramPort(socket, kLoopback, port, "");
  std::array<std::uint8_t, kMaxPacketSize> buffer{};
  Measure(state, port, [&](Tally& tally) {
    platform::Endpoint sender;
    const int received = platform::ReceiveDatagram(socket, buffer, 0, sender);
    if (received > 0) {
      tally.Count(std::span(buffer).first(static_cast<std::size_t>(received)));
    }
    return received > 0;
  });
  platform::CloseSocket(socket);
}

// Datagrams a second: 130 Mbit/s, four times as many, and as fast as the sender goes.
void Rates(benchmark::internal::Benchmark* bench) {
  bench->Arg(10'833)->Arg(43'333)->Arg(0)->UseManualTime()->Repetitions(5)->Iterations(1);
}
BENCHMARK(BM_BareReceiveFrom)->Apply(Rates);
BENCHMARK(BM_SocketSource)->Apply(Rates);

}  // namespace
}  // namespace quarn::lidar

BENCHMARK_MAIN();
