#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace quarn::lidar {

/// Every byte as two lower-case digits and one space: the text of a non-empty input ends in a space.
std::string HexLine(std::span<const std::uint8_t> bytes);

}  // namespace quarn::lidar
