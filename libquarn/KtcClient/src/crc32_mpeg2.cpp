#include "libquarn/KtcClient/src/crc32_mpeg2.h"

#include <array>
#include <cstddef>

#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

constexpr std::uint32_t kPolynomial = 0x04C11DB7U;
constexpr std::size_t kSlices = 16;

using Table = std::array<std::uint32_t, 256>;

// Table k holds the contribution of a byte that is followed by k more bytes, so that sixteen bytes can be
// processed with independent look-ups.
constexpr std::array<Table, kSlices> MakeTables() {
  std::array<Table, kSlices> tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte << 24U;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc << 1U) ^ ((crc & 0x80000000U) != 0 ? kPolynomial : 0U);
    }
    tables[0][byte] = crc;
  }
  for (std::size_t slice = 1; slice < kSlices; ++slice) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t shorter = tables[slice - 1][byte];
      tables[slice][byte] = (shorter << 8U) ^ tables[0][shorter >> 24U];
    }
  }
  return tables;
}

constexpr std::array<Table, kSlices> kTables = MakeTables();

// The contribution of the four bytes of `word` when `following` more bytes come after them.
std::uint32_t FourBytes(std::uint32_t word, std::size_t following) {
  return kTables[following + 3][word >> 24U] ^ kTables[following + 2][(word >> 16U) & 0xFFU] ^
         kTables[following + 1][(word >> 8U) & 0xFFU] ^ kTables[following][word & 0xFFU];
}

}  // namespace

std::uint32_t Crc32Mpeg2(std::span<const std::uint8_t> bytes, std::uint32_t start) {
  std::uint32_t crc = start;
  while (bytes.size() >= kSlices) {
    crc = FourBytes(crc ^ LoadBigEndian<std::uint32_t>(bytes, 0), 12) ^
          FourBytes(LoadBigEndian<std::uint32_t>(bytes, 4), 8) ^
          FourBytes(LoadBigEndian<std::uint32_t>(bytes, 8), 4) ^
          FourBytes(LoadBigEndian<std::uint32_t>(bytes, 12), 0);
    bytes = bytes.subspan(kSlices);
  }
  for (const std::uint8_t byte : bytes) {
    crc = (crc << 8U) ^ kTables[0][(crc >> 24U) ^ byte];
  }
  return crc;
}

}  // namespace quarn::lidar
