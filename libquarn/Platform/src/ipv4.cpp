#include "libquarn/Platform/src/ipv4.h"

#include <algorithm>

#include "libquarn/Platform/src/byte_text.h"

namespace quarn::lidar {

std::optional<Ipv4> ParseIpv4(std::string_view text) {
  const ByteText read = ReadByteText(text, kIpv4Text);
  if (!read) return std::nullopt;
  Ipv4 address{};
  std::copy(read.bytes.begin(), read.bytes.end(), address.begin());
  // Other programs read leading zeros as octal, so such a text is refused: it could mean another host.
  return FormatIpv4(address) == text ? std::optional(address) : std::nullopt;
}

std::string FormatIpv4(std::span<const std::uint8_t, 4> address) {
  std::string text = std::to_string(address[0]);
  for (const std::uint8_t byte : address.subspan<1>()) {
    text += "." + std::to_string(byte);
  }
  return text;
}

}  // namespace quarn::lidar
