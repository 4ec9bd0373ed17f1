#include "libquarn/Capture/src/tcp_packet.h"

#include <algorithm>
#include <cstddef>

#include "libquarn/Capture/src/pcap_format.h"
#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

using ByteView = std::span<const std::uint8_t>;

// RFC 791, 3.1.
constexpr std::size_t kIpHeader = 20;
constexpr std::size_t kIpTotalLength = 2;
constexpr std::size_t kIpIdentification = 4;
constexpr std::size_t kIpFragment = 6;
constexpr std::size_t kIpTimeToLive = 8;
constexpr std::size_t kIpProtocol = 9;
constexpr std::size_t kIpChecksum = 10;
constexpr std::size_t kIpSource = 12;
constexpr std::size_t kIpDestination = 16;
constexpr std::uint8_t kIpVersionAndSize = 0x45;
constexpr std::uint16_t kFragmentMask = 0x3FFF;  // more fragments follow, or this is not the first
constexpr std::uint16_t kDoNotFragment = 0x4000;
constexpr std::uint8_t kTcpProtocol = 6;

// RFC 9293, 3.1; from the beginning of the TCP header.
constexpr std::size_t kTcpHeader = 20;
constexpr std::size_t kTcpDestinationPort = 2;
constexpr std::size_t kTcpSequence = 4;
constexpr std::size_t kTcpAcknowledgement = 8;
constexpr std::size_t kTcpDataOffset = 12;
constexpr std::size_t kTcpFlags = 13;
constexpr std::size_t kTcpWindow = 14;
constexpr std::size_t kTcpChecksum = 16;

constexpr std::uint16_t kEtherTypeIpv4 = 0x0800;
constexpr std::uint16_t kEtherTypeVlan = 0x8100;
constexpr std::size_t kVlanTag = 4;

/// RFC 1071.
std::uint16_t InternetChecksum(ByteView bytes, std::uint32_t sum = 0) {
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) sum += LoadBigEndian<std::uint16_t>(bytes, i);
  if (bytes.size() % 2 != 0) sum += static_cast<std::uint32_t>(bytes.back()) << 8U;
  while (sum > 0xFFFF) sum = (sum & 0xFFFFU) + (sum >> 16U);
  return static_cast<std::uint16_t>(~sum);
}

/// The IPv4 packet after the link header; empty for anything else.
ByteView IpPacket(std::uint32_t link_type, ByteView packet) {
  const auto after = [packet](std::size_t type, std::size_t size) {
    const bool is_ip = packet.size() > size && LoadBigEndian<std::uint16_t>(packet, type) == kEtherTypeIpv4;
    return is_ip ? packet.subspan(size) : ByteView();
  };
  switch (link_type) {
    case kLinkRawIp:
    case kLinkIpv4:
      return packet;
    case kLinkLoopback:
      return packet.size() > 4 ? packet.subspan(4) : ByteView();
    case kLinkEthernet: {
      constexpr std::size_t kType = 12;
      const bool is_tagged =
          packet.size() > kType + 2 && LoadBigEndian<std::uint16_t>(packet, kType) == kEtherTypeVlan;
      return is_tagged ? after(kType + kVlanTag, kType + kVlanTag + 2) : after(kType, kType + 2);
    }
    case kLinkLinuxCooked:
      return after(14, 16);
    case kLinkLinuxCooked2:
      return after(0, 20);
    default:
      return {};
  }
}

Ipv4 AddressAt(ByteView bytes, std::size_t offset) {
  Ipv4 address{};
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), address.size(), address.begin());
  return address;
}

}  // namespace

std::string FormatEndpoint(const TcpEndpoint& endpoint) {
  return FormatIpv4(endpoint.address) + ":" + std::to_string(endpoint.port);
}

std::vector<std::uint8_t> EncodeTcpPacket(const TcpSegment& segment, std::uint16_t identification) {
  constexpr std::uint8_t kHops = 64;
  constexpr std::uint16_t kWindow = 0xFFFF;
  const ByteView payload = segment.payload.first(std::min(segment.payload.size(), kLargestSegment));
  std::vector<std::uint8_t> packet(kIpHeader + kTcpHeader + payload.size());
  std::copy(payload.begin(), payload.end(), packet.begin() + kIpHeader + kTcpHeader);
  const std::span<std::uint8_t> ip = std::span(packet).first(kIpHeader);
  const std::span<std::uint8_t> tcp = std::span(packet).subspan(kIpHeader);
  ip[0] = kIpVersionAndSize;
  StoreBigEndian(ip, kIpTotalLength, static_cast<std::uint16_t>(packet.size()));
  StoreBigEndian(ip, kIpIdentification, identification);
  StoreBigEndian(ip, kIpFragment, kDoNotFragment);
  ip[kIpTimeToLive] = kHops;
  ip[kIpProtocol] = kTcpProtocol;
  std::copy(segment.source.address.begin(), segment.source.address.end(), ip.begin() + kIpSource);
  std::copy(segment.destination.address.begin(), segment.destination.address.end(),
            ip.begin() + kIpDestination);
  StoreBigEndian(ip, kIpChecksum, InternetChecksum(ip));
  StoreBigEndian(tcp, 0, segment.source.port);
  StoreBigEndian(tcp, kTcpDestinationPort, segment.destination.port);
  StoreBigEndian(tcp, kTcpSequence, segment.sequence);
  StoreBigEndian(tcp, kTcpAcknowledgement, segment.acknowledgement);
  tcp[kTcpDataOffset] = static_cast<std::uint8_t>(kTcpHeader / 4 << 4U);
  tcp[kTcpFlags] = segment.flags;
  StoreBigEndian(tcp, kTcpWindow, kWindow);
  // The checksum also covers both addresses, the protocol and the length.
  std::uint32_t pseudo_header = kTcpProtocol + static_cast<std::uint32_t>(tcp.size());
  for (std::size_t i = kIpSource; i < kIpHeader; i += 2) {
    pseudo_header += LoadBigEndian<std::uint16_t>(ip, i);
  }
  StoreBigEndian(tcp, kTcpChecksum, InternetChecksum(tcp, pseudo_header));
  return packet;
}

std::optional<TcpSegment> DecodeTcpPacket(std::uint32_t link_type, ByteView packet) {
  ByteView ip = IpPacket(link_type, packet);
  if (ip.size() < kIpHeader || ip[0] >> 4U != 4 || ip[kIpProtocol] != kTcpProtocol ||
      (LoadBigEndian<std::uint16_t>(ip, kIpFragment) & kFragmentMask) != 0) {
    return std::nullopt;
  }
  const std::size_t ip_header = std::size_t{ip[0] & 0x0FU} * 4;
  // 0 if the network card segments large packets itself: then all captured bytes count.
  const std::size_t total = LoadBigEndian<std::uint16_t>(ip, kIpTotalLength);
  if (total != 0) ip = ip.first(std::min(total, ip.size()));
  if (ip_header < kIpHeader || ip.size() < ip_header + kTcpHeader) return std::nullopt;
  const ByteView tcp = ip.subspan(ip_header);
  const std::size_t tcp_header = std::size_t{tcp[kTcpDataOffset]} / 16 * 4;
  if (tcp_header < kTcpHeader || tcp.size() < tcp_header) return std::nullopt;
  TcpSegment segment;
  segment.source = {AddressAt(ip, kIpSource), LoadBigEndian<std::uint16_t>(tcp, 0)};
  segment.destination = {AddressAt(ip, kIpDestination),
                         LoadBigEndian<std::uint16_t>(tcp, kTcpDestinationPort)};
  segment.sequence = LoadBigEndian<std::uint32_t>(tcp, kTcpSequence);
  segment.acknowledgement = LoadBigEndian<std::uint32_t>(tcp, kTcpAcknowledgement);
  segment.flags = tcp[kTcpFlags];
  segment.payload = tcp.subspan(tcp_header);
  return segment;
}

}  // namespace quarn::lidar
