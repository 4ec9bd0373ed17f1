#include "libquarn/KtcClient/src/connecting.h"

#include <algorithm>
#include <chrono>

namespace quarn::lidar {
namespace {

using Clock = std::chrono::steady_clock;

// How long an interrupt may go unnoticed while a connection is under way.
constexpr std::chrono::milliseconds kWaitSlice{20};

}  // namespace

int StartConnecting(platform::SocketHandle socket, const std::string& ip, std::uint16_t port) {
  platform::SetNonBlocking(socket, true);
  if (platform::ConnectSocket(socket, ip, port) == 0) {
    return 0;
  }
  const int error = platform::LastSocketError();
  return platform::IsWouldBlock(error) ? 0 : error;
}

bool WaitConnected(platform::SocketHandle socket, std::optional<std::uint32_t> timeout_s,
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
      // An interrupt's shutdown ends the wait as well.
      return ready > 0 && !interrupted;
    }
    if (timeout_s && Clock::now() >= deadline) {
      return false;
    }
  }
  return false;
}

}  // namespace quarn::lidar
