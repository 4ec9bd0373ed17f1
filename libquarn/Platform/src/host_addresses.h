#pragma once

#include <vector>

#include "libquarn/Platform/src/ipv4.h"

namespace quarn::lidar {

/// An IPv4 address of this computer, and the length of its subnet prefix in bits.
struct HostAddress {
  Ipv4 address{};
  unsigned prefix_length = 32;
};

/// The addresses of all network interfaces that are up; empty if the system can't list them.
std::vector<HostAddress> HostAddresses();

bool IsInSubnet(const Ipv4& address, const HostAddress& host);

}  // namespace quarn::lidar
