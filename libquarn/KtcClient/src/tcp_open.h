#pragma once

#include <atomic>
#include <cstdint>

namespace quarn::lidar {

/// Connects to the IPv4 address `ip`, with the system's own time-out. Returns the socket in blocking mode,
/// with one start-up of the socket system that whoever closes it cleans up; -1 on failure, 0 if the socket
/// system can't start. Fails within a few milliseconds once `interrupted` (may be null) becomes true.
int tcp_open(const char* ip, int port, const std::atomic<bool>* interrupted = nullptr);

/// The same within `timeout_s` seconds, from `local_port` unless that is 0 or in use. -1 on failure or
/// time-out, 0 if the peer refuses while the attempt is under way.
int tcp_try_open(std::uint16_t local_port, const char* ip, int port, std::uint32_t timeout_s,
                 const std::atomic<bool>* interrupted = nullptr);

}  // namespace quarn::lidar
