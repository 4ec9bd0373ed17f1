#include "simulator/src/stream_tally.h"

#include <algorithm>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {

bool StreamTally::Count(std::span<const std::uint8_t> datagram) {
  if (datagram.size() < sizeof(std::uint64_t)) return false;
  const auto number = quarn::lidar::LoadBigEndian<std::uint64_t>(datagram, 0);
  disordered_ += received_ != 0 && number <= highest_ ? 1U : 0U;
  lowest_ = received_ == 0 ? number : std::min(lowest_, number);
  highest_ = std::max(highest_, number);
  ++received_;
  return true;
}

std::uint64_t StreamTally::lost() const {
  if (received_ == 0) return 0;
  const std::uint64_t expected = highest_ - lowest_ + 1;
  return expected > received_ ? expected - received_ : 0;  // a duplicate offsets a lost one
}

}  // namespace varkel::sim
