#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

struct TcpTarget {
  std::string ip{};  ///< IP version 4 text
  std::uint16_t port = 0;
  std::uint16_t local_port = 0;              ///< 0: any
  std::optional<std::uint32_t> timeout_s{};  ///< nullopt: the system's own time-out
};

/// How far a connection attempt got.
enum class ConnectResult : std::uint8_t {
  kConnected,
  kNoSocketSystem,  ///< the start-up of the socket system failed
  kNoSocket,
  kBadAddress,  ///< `ip` is not an IPv4 address
  kNotStarted,  ///< the system refused the attempt at once
  kTimedOut,    ///< no answer within `timeout_s`
  kFailed,      ///< the attempt ended with an error, such as a refusal by the peer
  kWaitFailed,  ///< waiting for the result failed
  kInterrupted,
};

struct ConnectOutcome {
  ConnectResult result = ConnectResult::kFailed;
  /// Connected and in blocking mode; the caller closes it (platform::CloseSocket and CleanUpSockets).
  /// kInvalidSocket unless kConnected; there is then nothing to clean up.
  platform::SocketHandle socket = platform::kInvalidSocket;
  int error = 0;              ///< the system's error, unless connected, timed out or interrupted
  bool is_local_port = true;  ///< false if `local_port` was in use and the system chose another
};

/// Makes one TCP connection. Waits in slices of 20 ms, so that `interrupted`, once true, ends the attempt
/// within one slice. Logs nothing; the transports do.
ConnectOutcome ConnectTcp(const TcpTarget& target, const std::atomic<bool>& interrupted);

}  // namespace quarn::lidar
