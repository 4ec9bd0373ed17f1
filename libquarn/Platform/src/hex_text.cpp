#include "libquarn/Platform/src/hex_text.h"

#include <string_view>

namespace quarn::lidar {

std::string HexLine(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0x0FU];
    text += ' ';
  }
  return text;
}

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text = HexLine(bytes);
  if (!text.empty()) text.pop_back();
  return text;
}

}  // namespace quarn::lidar
