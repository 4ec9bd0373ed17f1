#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

/// Starts a connection on a socket that it makes non-blocking: 0 when it is under way or done, else the
/// socket error. `ip` is an address that IsIpV4 accepts.
int StartConnecting(platform::SocketHandle socket, const std::string& ip, std::uint16_t port);

/// Waits until the attempt has ended, well or badly: the socket's pending error tells. False when
/// `timeout_s` seconds run out first (nothing: as long as the system tries) or `interrupted` becomes true.
bool WaitConnected(platform::SocketHandle socket, std::optional<std::uint32_t> timeout_s,
                   const std::atomic<bool>& interrupted);

}  // namespace quarn::lidar
