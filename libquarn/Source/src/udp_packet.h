#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quarn::lidar {

/// The most bytes that one receive from a data source takes.
inline constexpr std::size_t kMaxPacketSize = 1500;

/// One datagram and where it came from.
struct UdpPacket {
  std::array<std::uint8_t, kMaxPacketSize> data{};
  std::uint32_t sender_ip = 0;    ///< IP version 4, network order
  std::uint16_t sender_port = 0;  ///< host order
  bool timed_out = false;         ///< the receive timed out
};

}  // namespace quarn::lidar
