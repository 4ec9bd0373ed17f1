#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quarn::lidar {

/// An IPv4 address, in written order, which is network order.
using Ipv4 = std::array<std::uint8_t, 4>;

/// Parses dotted decimal text: four numbers from 0 to 255 without leading zeros, signs or spaces; nullopt if
/// it is anything else.
std::optional<Ipv4> ParseIpv4(std::string_view text);

/// "192.168.1.10".
std::string FormatIpv4(std::span<const std::uint8_t, 4> address);

}  // namespace quarn::lidar
