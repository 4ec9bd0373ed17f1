#include <winsock2.h>
#include <ws2tcpip.h>
// After the socket headers, whose declarations it uses.
#include <iphlpapi.h>

#include <cstring>

#include "libquarn/Platform/src/host_addresses.h"

namespace quarn::lidar {

namespace {

/// The adapters may change between asking for the size of their list and for the list.
constexpr int kTries = 3;
constexpr ULONG kUsualSize = 16 * 1024;

}  // namespace

std::vector<HostAddress> HostAddresses() {
  std::vector<unsigned char> buffer(kUsualSize);
  auto* adapters = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  ULONG result = ERROR_BUFFER_OVERFLOW;
  for (int i = 0; i < kTries && result == ERROR_BUFFER_OVERFLOW; ++i) {
    auto size = static_cast<ULONG>(buffer.size());
    result = GetAdaptersAddresses(AF_INET, GAA_FLAG_SKIP_DNS_SERVER, nullptr, adapters, &size);
    if (result != ERROR_BUFFER_OVERFLOW) break;
    buffer.resize(size);
    adapters = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data());
  }
  std::vector<HostAddress> addresses;
  if (result != NO_ERROR) return addresses;
  for (const auto* adapter = adapters; adapter != nullptr; adapter = adapter->Next) {
    if (adapter->OperStatus != IfOperStatusUp) continue;
    for (const auto* entry = adapter->FirstUnicastAddress; entry != nullptr; entry = entry->Next) {
      sockaddr_in ipv4{};
      std::memcpy(&ipv4, entry->Address.lpSockaddr, sizeof(ipv4));
      HostAddress host;
      std::memcpy(host.address.data(), &ipv4.sin_addr, host.address.size());
      host.prefix_length = entry->OnLinkPrefixLength;
      addresses.push_back(host);
    }
  }
  return addresses;
}

}  // namespace quarn::lidar
