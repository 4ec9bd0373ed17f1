#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace quarn::lidar {

/// Every byte as two lower-case digits and one blank, so that the text of a non-empty input ends in a blank.
/// Allocates once.
std::string HexLine(std::span<const std::uint8_t> bytes);

}  // namespace quarn::lidar
