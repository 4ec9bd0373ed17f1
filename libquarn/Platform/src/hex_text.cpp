#include "libquarn/Platform/src/hex_text.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace quarn::lidar {
namespace {

constexpr std::size_t kCharactersPerByte = 3;

// Four characters an entry, so that one machine word is copied; the fourth is overwritten by the next byte.
using Entry = std::array<char, 4>;

constexpr std::array<Entry, 256> MakeTable() {
  constexpr std::array<char, 16> kDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                            '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
  std::array<Entry, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = {kDigits[i >> 4U], kDigits[i & 0x0FU], ' ', ' '};
  }
  return table;
}

constexpr std::array<Entry, 256> kTable = MakeTable();

}  // namespace

std::string HexLine(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) {
    return {};
  }
  std::string text(bytes.size() * kCharactersPerByte, ' ');
  char* out = text.data();
  for (const std::uint8_t byte : bytes.first(bytes.size() - 1)) {
    std::memcpy(out, kTable[byte].data(), sizeof(Entry));
    out += kCharactersPerByte;
  }
  std::memcpy(out, kTable[bytes.back()].data(), kCharactersPerByte);
  return text;
}

}  // namespace quarn::lidar
