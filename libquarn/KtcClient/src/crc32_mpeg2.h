#pragma once

#include <cstdint>
#include <span>

namespace quarn::lidar {

/// CRC-32/MPEG-2: polynomial 0x04C11DB7, most significant bit first, no final inversion. For data in several
/// parts, pass the previous result as `start`.
std::uint32_t Crc32Mpeg2(std::span<const std::uint8_t> bytes, std::uint32_t start = 0xFFFFFFFFU);

}  // namespace quarn::lidar
