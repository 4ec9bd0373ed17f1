#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <bit>
#include <cstring>
#include <memory>

#include "libquarn/Platform/src/host_addresses.h"

namespace quarn::lidar {

namespace {

in_addr AddressIn(const sockaddr* socket_address) {
  sockaddr_in ipv4{};
  std::memcpy(&ipv4, socket_address, sizeof(ipv4));
  return ipv4.sin_addr;
}

}  // namespace

std::vector<HostAddress> HostAddresses() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) return {};
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, &freeifaddrs);
  std::vector<HostAddress> addresses;
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    if ((entry->ifa_flags & IFF_UP) == 0 || entry->ifa_netmask == nullptr) continue;
    HostAddress host;
    const in_addr address = AddressIn(entry->ifa_addr);
    static_assert(sizeof(address) == sizeof(host.address));
    std::memcpy(host.address.data(), &address, sizeof(address));
    host.prefix_length = static_cast<unsigned>(std::popcount(AddressIn(entry->ifa_netmask).s_addr));
    addresses.push_back(host);
  }
  return addresses;
}

}  // namespace quarn::lidar
