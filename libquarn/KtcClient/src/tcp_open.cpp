#include "libquarn/KtcClient/src/tcp_open.h"

#include <optional>
#include <string>
#include <system_error>

#include "libquarn/KtcClient/src/connecting.h"
#include "libquarn/Platform/src/logger.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {
namespace {

// The lines below are part of the TLS transport's log, whichever file writes them.
const char kSourceFile[] = "libquarn/KtcClient/src/tcp_ssl_client";

const std::atomic<bool> kNeverInterrupted{false};

void GiveUp(platform::SocketHandle socket) {
  platform::CloseSocket(socket);
  platform::CleanUpSockets();
}

void LogError(const char* what, int error) {
  QUARN_LOG(log_lib::kError, "%s errno:%d, %s", what, error, std::system_category().message(error).c_str());
}

}  // namespace

// Blocks as long as the system tries, but in slices: an interrupt must not wait for the system.
int tcp_open(const char* ip, int port, const std::atomic<bool>* interrupted) {
  const std::atomic<bool>& stop = interrupted != nullptr ? *interrupted : kNeverInterrupted;
  if (!platform::StartUpSockets()) {
    QUARN_LOG(log_lib::kError, "Initilize winsock error !");
    return 0;
  }
  QUARN_LOG(log_lib::kProgress, "ip:%s port:%d", ip, port);
  const platform::SocketHandle socket = platform::CreateTcpSocket();
  if (socket == platform::kInvalidSocket) {
    LogError("socket", platform::LastSocketError());
    platform::CleanUpSockets();
    return -1;
  }
  if (!platform::IsIpV4(ip)) {
    GiveUp(socket);
    QUARN_LOG(log_lib::kError, "tcp_open inet_pton error:%s", ip);
    return -1;
  }
  int error = StartConnecting(socket, ip, static_cast<std::uint16_t>(port));
  if (error == 0 && WaitConnected(socket, std::nullopt, stop)) {
    error = platform::PendingSocketError(socket);
  }
  if (error != 0 || stop) {
    if (error != 0) {
      LogError("connect", error);
    }
    GiveUp(socket);
    return -1;
  }
  platform::SetNonBlocking(socket, false);
  return static_cast<int>(socket);
}

int tcp_try_open(std::uint16_t local_port, const char* ip, int port, std::uint32_t timeout_s,
                 const std::atomic<bool>* interrupted) {
  if (!platform::StartUpSockets()) {
    QUARN_LOG(log_lib::kError, "Initilize winsock error !");
    return -1;
  }
  const platform::SocketHandle socket = platform::CreateTcpSocket();
  if (socket == platform::kInvalidSocket) {
    platform::CleanUpSockets();
    return -1;
  }
  if (local_port != 0 && !platform::BindPort(socket, local_port)) {
    QUARN_LOG(log_lib::kError, "Failed to bind local port, system will auto assign one");
  }
  if (!platform::IsIpV4(ip)) {
    GiveUp(socket);
    QUARN_LOG(log_lib::kError, "tcp_try_open inet_pton error:%s", ip);
    return -1;
  }
  if (StartConnecting(socket, ip, static_cast<std::uint16_t>(port)) != 0) {
    QUARN_LOG(log_lib::kError, "socket Connection error.");
    GiveUp(socket);
    return -1;
  }
  if (!WaitConnected(socket, timeout_s, interrupted != nullptr ? *interrupted : kNeverInterrupted)) {
    GiveUp(socket);
    return -1;
  }
  if (platform::PendingSocketError(socket) != 0) {
    GiveUp(socket);
    return 0;
  }
  platform::SetNonBlocking(socket, false);
  return static_cast<int>(socket);
}

}  // namespace quarn::lidar
