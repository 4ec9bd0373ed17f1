#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace quarn::lidar {

/// The classic pcap file: a file header of 24 bytes, then for each packet a record header of 16 bytes and the
/// packet. All numbers are in the byte order of the machine that wrote the file, which shows in the first
/// one. https://www.ietf.org/archive/id/draft-ietf-opsawg-pcap-04.html
inline constexpr std::size_t kPcapHeaderSize = 24;
inline constexpr std::size_t kPcapRecordSize = 16;
inline constexpr std::uint32_t kPcapMicroseconds = 0xA1B2C3D4;
inline constexpr std::uint32_t kPcapNanoseconds = 0xA1B23C4D;
/// The first number of a file in the newer pcapng format, the same in either byte order.
inline constexpr std::uint32_t kPcapNextGeneration = 0x0A0D0D0A;
/// The largest packet that a record can hold (libpcap's limit).
inline constexpr std::uint32_t kLargestPacket = 262144;

/// The type of a packet's first header: https://www.tcpdump.org/linktypes.html
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
