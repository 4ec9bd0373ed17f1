#include "libquarn/KtcClient/src/tcp_connect.h"

#include <algorithm>
#include <chrono>

#include "libquarn/Platform/src/ipv4.h"

namespace quarn::lidar {
namespace {

using Clock = std::chrono::steady_clock;

// How long an interrupt may go unnoticed while a connection is under way.
constexpr std::chrono::milliseconds kWaitSlice{20};

// Waits until the attempt has succeeded or failed.
ConnectResult WaitConnected(platform::SocketHandle socket, std::optional<std::uint32_t> timeout_s,
                            const std::atomic<bool>& interrupted) {
  const auto deadline = Clock::now() + std::chrono::seconds(timeout_s.value_or(0));
  while (!interrupted) {
    auto slice = kWaitSlice;
    if (timeout_s) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
      slice = std::clamp(left, std::chrono::milliseconds(0), kWaitSlice);
    }
    const int ready = platform::WaitWritable(socket, static_cast<int>(slice.count()));
    if (ready != 0) {
      return ready > 0 ? ConnectResult::kConnected : ConnectResult::kWaitFailed;
    }
    if (timeout_s && Clock::now() >= deadline) {
      return ConnectResult::kTimedOut;
    }
  }
  return ConnectResult::kInterrupted;
}

// Connects a socket, which the caller closes unless the result is kConnected.
ConnectOutcome Attempt(platform::SocketHandle socket, const TcpTarget& target,
                       const std::atomic<bool>& interrupted) {
  ConnectOutcome outcome;
  outcome.is_local_port = target.local_port == 0 || platform::BindPort(socket, target.local_port);
  if (!ParseIpv4(target.ip)) {
    outcome.result = ConnectResult::kBadAddress;
    return outcome;
  }
  platform::SetNonBlocking(socket, true);
  if (platform::ConnectSocket(socket, target.ip, target.port) != 0) {
    outcome.error = platform::LastSocketError();
    if (!platform::IsWouldBlock(outcome.error)) {
      outcome.result = ConnectResult::kNotStarted;
      return outcome;
    }
  }
  outcome.result = WaitConnected(socket, target.timeout_s, interrupted);
  if (outcome.result == ConnectResult::kWaitFailed) {
    outcome.error = platform::LastSocketError();
  } else if (outcome.result == ConnectResult::kConnected) {
    outcome.error = platform::PendingSocketError(socket);
    outcome.result = outcome.error == 0 ? ConnectResult::kConnected : ConnectResult::kFailed;
  }
  return outcome;
}

}  // namespace

ConnectOutcome ConnectTcp(const TcpTarget& target, const std::atomic<bool>& interrupted) {
  ConnectOutcome outcome;
  if (!platform::StartUpSockets()) {
    outcome.result = ConnectResult::kNoSocketSystem;
    return outcome;
  }
  const platform::SocketHandle socket = platform::CreateTcpSocket();
  if (socket == platform::kInvalidSocket) {
    outcome.error = platform::LastSocketError();
    outcome.result = ConnectResult::kNoSocket;
    platform::CleanUpSockets();
    return outcome;
  }
  outcome = Attempt(socket, target, interrupted);
  if (outcome.result == ConnectResult::kConnected) {
    platform::SetNonBlocking(socket, false);
    outcome.socket = socket;
  } else {
    platform::CloseSocket(socket);
    platform::CleanUpSockets();
  }
  return outcome;
}

}  // namespace quarn::lidar
