// Frames, log lines and checksums, compared with plain copies and loops over the same bytes.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/KtcClient/src/ktc_parser.h"

namespace quarn::lidar {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kCmd = 0x31;
constexpr std::size_t kHeader = 8;

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

void BM_Decode(benchmark::State& state) {
  const Bytes reply(kHeader + static_cast<std::size_t>(state.range(0)), 0x5A);
  const KtcParser parser(1);
  for ([[maybe_unused]] auto _ : state) {
    Bytes payload;
    parser.KtcStreamDecode(0, 0, reply, kHeader, static_cast<std::int32_t>(state.range(0)), payload);
    benchmark::DoNotOptimize(payload.data());
  }
  SetBytes(state);
}

// The reference for the others: one allocation and one copy of the same bytes.
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

BENCHMARK(BM_AllocateAndCopy)->Arg(64)->Arg(1024)->Arg(65000);
BENCHMARK(BM_Encode)->Arg(64)->Arg(1024)->Arg(65000);
BENCHMARK(BM_Decode)->Arg(64)->Arg(1024)->Arg(65000);

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

BENCHMARK(BM_CrcOneTable)->Arg(16)->Arg(1024)->Arg(1 << 20);
BENCHMARK(BM_Crc)->Arg(16)->Arg(1024)->Arg(1 << 20);

}  // namespace
}  // namespace quarn::lidar

BENCHMARK_MAIN();
