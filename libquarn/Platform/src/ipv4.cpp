#include "libquarn/Platform/src/ipv4.h"

#include <charconv>
#include <system_error>

namespace quarn::lidar {

std::optional<Ipv4> ParseIpv4(std::string_view text) {
  Ipv4 address{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < address.size(); ++i) {
    if (i > 0 && (at == end || *at++ != '.')) {
      return std::nullopt;
    }
    const auto [stop, error] = std::from_chars(at, end, address[i]);
    if (error != std::errc{} || (*at == '0' && stop - at > 1)) {
      return std::nullopt;
    }
    at = stop;
  }
  return at == end ? std::optional(address) : std::nullopt;
}

std::string FormatIpv4(std::span<const std::uint8_t, 4> address) {
  std::string text = std::to_string(address[0]);
  for (const std::uint8_t byte : address.subspan<1>()) {
    text += "." + std::to_string(byte);
  }
  return text;
}

}  // namespace quarn::lidar
