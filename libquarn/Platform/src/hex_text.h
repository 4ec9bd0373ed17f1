#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace quarn::lidar {

/// Every byte as two lower-case digits followed by a space, also after the last byte.
std::string HexLine(std::span<const std::uint8_t> bytes);

/// The same without the last space.
std::string HexText(std::span<const std::uint8_t> bytes);

}  // namespace quarn::lidar
