#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kCmd = 0x31;
constexpr std::size_t kHeader = 8;

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

void BM_ExchangeClient(benchmark::State& state) {
  const Responder responder(static_cast<std::size_t>(state.range(0)));
  KtcClient client("127.0.0.1", responder.port(), false, 0, 1, "", "", "", 4000, 4000, 5, 0);
  while (!client.IsOpen()) {
    std::this_thread::yield();
  }
  Bytes result;
  for ([[maybe_unused]] auto _ : state) {
    if (client.QueryCommand({}, result, kCmd) != 0) {
      state.SkipWithError("exchange failed");
      break;
    }
  }
}

// The same system calls without a client around them: what an exchange costs at least.
void BM_ExchangeBareSocket(benchmark::State& state) {
  const Responder responder(static_cast<std::size_t>(state.range(0)));
  const platform::SocketHandle socket = platform::CreateTcpSocket();
  platform::ConnectSocket(socket, "127.0.0.1", responder.port());
  Bytes request;
  KtcParser(1).KtcStreamEncode({}, request, kCmd);
  Bytes buffer(1500);
  Bytes reply(kHeader + static_cast<std::size_t>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    platform::SetSocketReceiveTimeout(socket, 50);
    platform::SetSocketSendTimeout(socket, 50);
    while (platform::ReceiveBytes(socket, buffer, 0) > 0) {
    }
    platform::SetSocketReceiveTimeout(socket, 4000);
    platform::SetSocketSendTimeout(socket, 4000);
    platform::SendBytes(socket, request, 0);
    for (std::size_t filled = 0; filled < reply.size();) {
      const int received = platform::ReceiveBytes(socket, std::span(reply).subspan(filled), 0);
      if (received <= 0) {
        state.SkipWithError("exchange failed");
        break;
      }
      filled += static_cast<std::size_t>(received);
    }
  }
  platform::CloseSocket(socket);
}

// The drain waits 50 ms: the clock must be the wall's, and ten rounds a run are enough.
BENCHMARK(BM_ExchangeBareSocket)->Arg(0)->Arg(64)->Arg(1024)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExchangeClient)->Arg(0)->Arg(64)->Arg(1024)->UseRealTime()->Unit(benchmark::kMillisecond);

void SetBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_Encode(benchmark::State& state) {
  const Bytes payload(static_cast<std::size_t>(state.range(0)), 0x5A);
  const KtcParser parser(1);
  for ([[maybe_unused]] auto _ : state) {
    Bytes frame;
    parser.KtcStreamEncode(payload, frame, kCmd);
    benchmark::DoNotOptimize(frame.data());
  }
  SetBytes(state);
}

void BM_HexLine(benchmark::State& state) {
  const Bytes payload(static_cast<std::size_t>(state.range(0)), 0x5A);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(HexLine(payload).data());
  }
  SetBytes(state);
}

// What encode and hex line are measured by: one allocation and one copy. A hex line is three times its input.
void BM_AllocateAndCopy(benchmark::State& state) {
  const Bytes payload(static_cast<std::size_t>(state.range(0)), 0x5A);
  for ([[maybe_unused]] auto _ : state) {
    const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[payload.size()]);
    std::memcpy(copy.get(), payload.data(), payload.size());
    benchmark::DoNotOptimize(copy.get());
    benchmark::ClobberMemory();
  }
  SetBytes(state);
}

BENCHMARK(BM_AllocateAndCopy)->Arg(64)->Arg(1024)->Arg(65000)->Arg(192)->Arg(3072)->Arg(195000);
BENCHMARK(BM_Encode)->Arg(64)->Arg(1024)->Arg(65000);
BENCHMARK(BM_HexLine)->Arg(64)->Arg(1024)->Arg(65000);

void BM_Crc(benchmark::State& state) {
  const Bytes data(static_cast<std::size_t>(state.range(0)), 0x5A);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(Crc32Mpeg2(data));
  }
  SetBytes(state);
}

void BM_CrcOneTable(benchmark::State& state) {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    // The CRC of one byte from a start of zero is the byte's table entry.
    const std::array<std::uint8_t, 1> one = {static_cast<std::uint8_t>(byte)};
    table[byte] = Crc32Mpeg2(one, 0);
  }
  const Bytes data(static_cast<std::size_t>(state.range(0)), 0x5A);
  for ([[maybe_unused]] auto _ : state) {
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const std::uint8_t byte : data) {
      crc = (crc << 8U) ^ table[(crc >> 24U) ^ byte];
    }
    benchmark::DoNotOptimize(crc);
  }
  SetBytes(state);
}

BENCHMARK(BM_CrcOneTable)->Arg(1024)->Arg(1 << 20);
BENCHMARK(BM_Crc)->Arg(1024)->Arg(1 << 20);

}  // namespace
}  // namespace quarn::lidar

BENCHMARK_MAIN();
