#include "libquarn/Platform/src/host_addresses.h"

#include <algorithm>
#include <cstddef>

namespace quarn::lidar {

bool IsInSubnet(const Ipv4& address, const HostAddress& host) {
  constexpr unsigned kByteBits = 8;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const unsigned before = static_cast<unsigned>(i) * kByteBits;
    if (host.prefix_length <= before) return true;
    const unsigned bits = std::min(host.prefix_length - before, kByteBits);
    const unsigned mask = 0xFFU << (kByteBits - bits) & 0xFFU;
    if ((static_cast<unsigned>(address[i] ^ host.address[i]) & mask) != 0) return false;
  }
  return true;
}

}  // namespace quarn::lidar
