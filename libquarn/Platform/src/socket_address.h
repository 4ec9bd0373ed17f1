#pragma once

#ifdef _WIN32
#include <winsock2.h>
#else
#include <netinet/in.h>
#endif

#include <bit>
#include <cstdint>
#include <optional>
#include <string>

#include "libquarn/Platform/src/ipv4.h"

/// Addresses as the system's socket calls take them. Only socket_posix.cpp and socket_windows.cpp include
/// this.
namespace quarn::platform {

inline sockaddr_in MakeAddress(in_addr ip, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr = ip;
  address.sin_port = htons(port);
  return address;
}

inline in_addr AnyAddress() {
  in_addr any{};
  any.s_addr = htonl(INADDR_ANY);
  return any;
}

/// Nullopt unless the text is a dotted IPv4 address.
inline std::optional<in_addr> ParseAddress(const std::string& ip) {
  const std::optional<lidar::Ipv4> parsed = lidar::ParseIpv4(ip);
  return parsed ? std::optional(std::bit_cast<in_addr>(*parsed)) : std::nullopt;
}

/// The same, but an empty text means any address.
inline std::optional<in_addr> ParseLocalAddress(const std::string& ip) {
  return ip.empty() ? AnyAddress() : ParseAddress(ip);
}

}  // namespace quarn::platform
