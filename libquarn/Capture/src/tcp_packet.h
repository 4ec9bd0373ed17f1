#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "libquarn/Platform/src/ipv4.h"

namespace quarn::lidar {

struct TcpEndpoint {
  Ipv4 address{};
  std::uint16_t port = 0;

  bool operator==(const TcpEndpoint&) const = default;
  bool operator<(const TcpEndpoint& other) const {
    return std::tie(address, port) < std::tie(other.address, other.port);
  }
};

/// "192.168.1.201:9347".
std::string FormatEndpoint(const TcpEndpoint& endpoint);

/// The flags of a TCP header (RFC 9293, 3.1).
enum TcpFlag : std::uint8_t {
  kTcpFin = 0x01,
  kTcpSyn = 0x02,
  kTcpRst = 0x04,
  kTcpPsh = 0x08,
  kTcpAck = 0x10,
};

struct TcpSegment {
  TcpEndpoint source;
  TcpEndpoint destination;
  std::uint32_t sequence = 0;
  std::uint32_t acknowledgement = 0;
  std::uint8_t flags = 0;
  std::span<const std::uint8_t> payload;  ///< borrowed
};

/// The payload bytes that fit into one Ethernet packet.
inline constexpr std::size_t kLargestSegment = 1460;

/// Builds an IPv4 packet with both checksums; the payload has at most kLargestSegment bytes.
std::vector<std::uint8_t> EncodeTcpPacket(const TcpSegment& segment, std::uint16_t identification);

/// The TCP segment in a packet whose first header is of type `link_type` (LinkType); its payload points into
/// `packet`. nullopt for anything else, including IP fragments. From a truncated packet, the payload bytes
/// that are present.
std::optional<TcpSegment> DecodeTcpPacket(std::uint32_t link_type, std::span<const std::uint8_t> packet);

}  // namespace quarn::lidar
