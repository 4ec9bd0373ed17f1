// An exchange of the client, compared with the same system calls on a bare socket, in milliseconds.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Clock = std::chrono::steady_clock;

constexpr std::uint8_t kCmd = 0x31;
constexpr std::size_t kHeader = 8;
constexpr std::uint32_t kReplyMs = 4000;

/// Answers every header that arrives with a reply of a fixed size, on one connection.
class Responder {
 public:
  explicit Responder(std::size_t payload) : listener_(platform::TcpListener::Listen("127.0.0.1", 0)) {
    KtcParser(1).KtcStreamEncode(Bytes(payload, 0x5A), reply_, kCmd);
    thread_ = std::thread([this] { Serve(); });
  }
  ~Responder() { thread_.join(); }
  Responder(const Responder&) = delete;
  Responder& operator=(const Responder&) = delete;

  std::uint16_t port() const { return listener_->port(); }

 private:
  void Serve() {
    const platform::SocketHandle connection = listener_->Accept(5000);
    std::array<std::uint8_t, kHeader> request;
    while (platform::ReceiveBytes(connection, request, 0) > 0) {
      platform::SendBytes(connection, reply_, 0);
    }
    platform::CloseSocket(connection);
  }

  const std::unique_ptr<platform::TcpListener> listener_;
  Bytes reply_;
  std::thread thread_;
};

/// The same system calls without a client: the minimum cost of an exchange.
class BareClient {
 public:
  BareClient(std::uint16_t port, std::size_t payload)
      : socket_(platform::CreateTcpSocket()), reply_(kHeader + payload) {
    platform::ConnectSocket(socket_, "127.0.0.1", port);
    KtcParser(1).KtcStreamEncode({}, request_, kCmd);
  }
  ~BareClient() { platform::CloseSocket(socket_); }
  BareClient(const BareClient&) = delete;
  BareClient& operator=(const BareClient&) = delete;

  bool Exchange() {
    SetTimeouts(kDrainMs);
    while (platform::ReceiveBytes(socket_, stale_, 0) > 0) {
    }
    SetTimeouts(kReplyMs);
    platform::SendBytes(socket_, request_, 0);
    for (std::size_t filled = 0; filled < reply_.size();) {
      const int received = platform::ReceiveBytes(socket_, std::span(reply_).subspan(filled), 0);
      if (received <= 0) {
        return false;
      }
      filled += static_cast<std::size_t>(received);
    }
    return true;
  }

 private:
  static constexpr std::uint32_t kDrainMs = 50;

  void SetTimeouts(std::uint32_t milliseconds) {
    platform::SetSocketReceiveTimeout(socket_, milliseconds);
    platform::SetSocketSendTimeout(socket_, milliseconds);
  }

  const platform::SocketHandle socket_;
  Bytes request_;
  Bytes reply_;
  std::array<std::uint8_t, 1500> stale_{};
};

template <typename Work>
double MillisecondsOf(Work work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// The value that `share` of the samples don't exceed.
double Percentile(std::vector<double> samples, double share) {
  std::sort(samples.begin(), samples.end());
  return samples[static_cast<std::size_t>(share * static_cast<double>(samples.size() - 1))];
}

// Client and bare socket alternate, so that other work on the machine affects both equally.
void BM_Exchange(benchmark::State& state) {
  const auto payload = static_cast<std::size_t>(state.range(0));
  const Responder responder(payload);
  KtcClient client("127.0.0.1", responder.port(), false, 0, 1, "", "", "", kReplyMs, kReplyMs, 5, 0);
  while (!client.IsOpen()) {
    std::this_thread::yield();
  }
  const Responder bare_responder(payload);
  BareClient bare(bare_responder.port(), payload);
  Bytes result;
  bool ok = true;
  std::vector<double> with_client;
  std::vector<double> with_socket;
  for ([[maybe_unused]] auto _ : state) {
    with_client.push_back(MillisecondsOf([&] { ok = ok && client.QueryCommand({}, result, kCmd) == 0; }));
    with_socket.push_back(MillisecondsOf([&] { ok = ok && bare.Exchange(); }));
  }
  if (!ok) {
    state.SkipWithError("exchange failed");
  }
  for (const auto& [name, share] : {std::pair("p50", 0.5), std::pair("p99", 0.99)}) {
    state.counters[std::string("client_") + name] = Percentile(with_client, share);
    state.counters[std::string("socket_") + name] = Percentile(with_socket, share);
  }
}

// An exchange waits 50 ms for stale input; of 200 of them the second longest is the 99th percentile.
BENCHMARK(BM_Exchange)->Arg(0)->Arg(64)->Arg(1024)->Arg(65536)->Repetitions(1)->Iterations(200);

}  // namespace
}  // namespace quarn::lidar

BENCHMARK_MAIN();
