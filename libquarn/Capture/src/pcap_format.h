#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace quarn::lidar {

/// The classic pcap file: a header of 24 bytes, then a record header of 16 bytes and a packet each. All
/// numbers have the byte order of the machine that wrote the file, which the first one tells.
/// https://www.ietf.org/archive/id/draft-ietf-opsawg-pcap-04.html
inline constexpr std::size_t kPcapHeaderSize = 24;
inline constexpr std::size_t kPcapRecordSize = 16;
inline constexpr std::uint32_t kPcapMicroseconds = 0xA1B2C3D4;
inline constexpr std::uint32_t kPcapNanoseconds = 0xA1B23C4D;
/// How a file of the newer format begins, in either byte order.
inline constexpr std::uint32_t kPcapNextGeneration = 0x0A0D0D0A;
/// The largest packet that a record holds (libpcap's limit).
inline constexpr std::uint32_t kLargestPacket = 262144;

/// What a packet begins with: https://www.tcpdump.org/linktypes.html
enum LinkType : std::uint32_t {
  kLinkLoopback = 0,
  kLinkEthernet = 1,
  kLinkRawIp = 101,
  kLinkLinuxCooked = 113,
  kLinkIpv4 = 228,
  kLinkLinuxCooked2 = 276,
};

using CaptureTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

}  // namespace quarn::lidar
