#include "libquarn/KtcClient/src/channel_fov.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

constexpr float kUnitsPerDegree = 10.0F;
constexpr std::size_t kAngleSize = 2;
constexpr std::size_t kPairSize = 2 * kAngleSize;

std::uint16_t ToUnits(float degrees) {
  constexpr float kLargest = std::numeric_limits<std::uint16_t>::max();
  if (std::isnan(degrees)) {
    return 0;
  }
  return static_cast<std::uint16_t>(std::clamp(std::round(degrees * kUnitsPerDegree), 0.0F, kLargest));
}

float ToDegrees(std::uint16_t units) {
  return static_cast<float>(units) / kUnitsPerDegree;
}

}  // namespace

std::vector<std::uint8_t> EncodeChannelFov(std::uint8_t channel, const FovAngles& starts) {
  std::vector<std::uint8_t> payload(1 + starts.size() * kAngleSize);
  payload[0] = channel;
  for (std::size_t i = 0; i < starts.size(); ++i) {
    StoreBigEndian(payload, 1 + i * kAngleSize, ToUnits(starts[i]));
  }
  return payload;
}

int DecodeMultiFov(std::span<const std::uint8_t> reply, FovAngles& starts, FovAngles& ends) {
  if (reply.empty()) {
    return 0;
  }
  const std::span<const std::uint8_t> pairs = reply.subspan(1);
  const std::size_t count = std::min({std::size_t{reply[0]}, kMaxFovs, pairs.size() / kPairSize});
  for (std::size_t i = 0; i < count; ++i) {
    starts[i] = ToDegrees(LoadBigEndian<std::uint16_t>(pairs, i * kPairSize));
    ends[i] = ToDegrees(LoadBigEndian<std::uint16_t>(pairs, i * kPairSize + kAngleSize));
  }
  return static_cast<int>(count);
}

}  // namespace quarn::lidar
