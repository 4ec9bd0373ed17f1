#include "simulator/src/field_of_view.h"

#include <algorithm>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {
namespace {

constexpr std::size_t kAngleSize = sizeof(std::uint16_t);

std::uint16_t StartAngle(std::span<const std::uint8_t> payload, std::size_t channel) {
  return quarn::lidar::LoadBigEndian<std::uint16_t>(payload, 1 + channel * kAngleSize);
}

}  // namespace

std::vector<std::uint8_t> FieldOfView::Reply(std::uint8_t count) const {
  const std::size_t pairs = std::min<std::size_t>(count, kChannels);
  std::vector<std::uint8_t> reply(1 + pairs * 2 * kAngleSize);
  reply[0] = static_cast<std::uint8_t>(pairs);
  const std::lock_guard<std::mutex> lock(mutex_);
  for (std::size_t i = 0; i < pairs; ++i) {
    const std::size_t pair = 1 + i * 2 * kAngleSize;
    quarn::lidar::StoreBigEndian(reply, pair, starts_[i]);
    quarn::lidar::StoreBigEndian(reply, pair + kAngleSize, kFullCircle);
  }
  return reply;
}

bool FieldOfView::IsValid(std::span<const std::uint8_t> payload) {
  if (payload.size() != kWriteSize || payload[0] > kChannels) return false;
  for (std::size_t i = 0; i < kChannels; ++i) {
    if (StartAngle(payload, i) > kFullCircle) return false;
  }
  return true;
}

void FieldOfView::Store(std::span<const std::uint8_t> payload) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (std::size_t i = 0; i < kChannels; ++i) starts_[i] = StartAngle(payload, i);
}

void FieldOfView::Reset() {
  const std::lock_guard<std::mutex> lock(mutex_);
  starts_.fill(0);
}

}  // namespace varkel::sim
