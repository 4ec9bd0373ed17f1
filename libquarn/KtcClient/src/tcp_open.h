#pragma once

#include <atomic>
#include <cstdint>

namespace quarn::lidar {

/// A TCP connection to IP version 4 text `ip`, as long as the system tries. The socket, blocking, with one
/// start-up of the sockets that its closer cleans up; -1 when it fails, 0 when the sockets can't start.
/// When `interrupted` (may be null) becomes true, it fails within a few milliseconds.
int tcp_open(const char* ip, int port, const std::atomic<bool>* interrupted = nullptr);

/// The same within `timeout_s` seconds, from `local_port` unless that is 0 or taken. -1 when it fails or the
/// time runs out, 0 when the other side refuses after the attempt was under way.
int tcp_try_open(std::uint16_t local_port, const char* ip, int port, std::uint32_t timeout_s,
                 const std::atomic<bool>* interrupted = nullptr);

}  // namespace quarn::lidar
