#pragma once

#include <vector>

#include "libquarn/Platform/src/ipv4.h"

namespace quarn::lidar {

/// An IP version 4 address of this computer, and how many of its leading bits name the subnet.
struct HostAddress {
  Ipv4 address{};
  unsigned prefix_length = 32;
};

/// Those of the network interfaces that are up; empty when the system does not tell.
std::vector<HostAddress> HostAddresses();

bool IsInSubnet(const Ipv4& address, const HostAddress& host);

}  // namespace quarn::lidar
