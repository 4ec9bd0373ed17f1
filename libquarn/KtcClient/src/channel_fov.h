#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quarn::lidar {

/// A sensor has up to five horizontal fields of view, each from a start to an end angle in degrees. On the
/// wire an angle is a u16 in tenths of a degree, big-endian.
inline constexpr std::size_t kMaxFovs = 5;
using FovAngles = std::array<float, kMaxFovs>;

/// The payload of kWriteChannelFovCmd: the channel, then the five start angles. Angles that a u16 can't hold
/// are clamped, NaN becomes 0.
std::vector<std::uint8_t> EncodeChannelFov(std::uint8_t channel, const FovAngles& starts);

/// Decodes the reply to kQueryMultiFovCmd: a count, then that many pairs of start and end. Returns the number
/// of pairs actually present, five at most; the other angles keep their values.
int DecodeMultiFov(std::span<const std::uint8_t> reply, FovAngles& starts, FovAngles& ends);

}  // namespace quarn::lidar
