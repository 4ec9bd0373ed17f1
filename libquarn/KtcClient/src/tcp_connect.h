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
  std::optional<std::uint32_t> timeout_s{};  ///< nullopt: as long as the system tries
};

/// How far a connection attempt got.
enum class ConnectResult : std::uint8_t {
  kConnected,
  kNoSocketSystem,  ///< the start-up of the socket system failed
  kNoSocket,
  kBadAddress,  ///< `ip` is no IP version 4 text
  kNotStarted,  ///< the system refused the attempt at once
  kTimedOut,    ///< nobody answered within `timeout_s`
  kFailed,      ///< the attempt ended with an error, as a refusal by the peer
  kWaitFailed,  ///< the system could not wait for its end
  kInterrupted,
};

struct ConnectOutcome {
  ConnectResult result = ConnectResult::kFailed;
  /// Connected and blocking, and the caller's to close (platform::CloseSocket and CleanUpSockets);
  /// kInvalidSocket unless kConnected. Everything else is cleaned up already.
  platform::SocketHandle socket = platform::kInvalidSocket;
  int error = 0;              ///< the system's error, unless connected, timed out or interrupted
  bool is_local_port = true;  ///< false if `local_port` was taken and the system chose another
};

/// Makes one TCP connection. Waits in slices of 20 ms, so that `interrupted`, once true, ends the attempt
/// within one slice. Logs nothing: the transports have words of their own.
ConnectOutcome ConnectTcp(const TcpTarget& target, const std::atomic<bool>& interrupted);

}  // namespace quarn::lidar
