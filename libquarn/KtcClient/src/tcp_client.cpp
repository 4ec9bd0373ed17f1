#include "libquarn/KtcClient/src/tcp_client.h"

#include <cerrno>
#include <chrono>
#include <iostream>

#include "libquarn/KtcClient/src/tcp_connect.h"
#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/KtcClient/src/tcp_client";

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kSlowReceive{1'000'000};

void LogFailedConnect(int error) {
  if (error == EINPROGRESS) {
    QUARN_LOG(log_lib::kWarning, "connect lidar time out");
  } else if (error != EWOULDBLOCK) {
    QUARN_LOG(log_lib::kError, "connect failed %d", error);
  }
  QUARN_LOG(log_lib::kError, "connect lidar fail errno %d", error);
}

}  // namespace

TcpClient::TcpClient() : SocketTransport(kSourceFile) {}

TcpClient::~TcpClient() {
  ReleaseSocket();
}

bool TcpClient::Open(const std::string& ip, std::uint16_t port, bool /*auto_receive*/, const char* /*cert*/,
                     const char* /*private_key*/, const char* /*ca*/) {
  if (IsOpenOn(ip, port)) {
    return true;
  }
  QUARN_LOG(log_lib::kProgress, "Open() IP %s port %u", ip.c_str(), unsigned{port});
  Close();
  SetPeer(ip, port);
  return PlainOpen();
}

bool TcpClient::TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port,
                        bool /*auto_receive*/, const char* /*cert*/, const char* /*private_key*/,
                        const char* /*ca*/, std::uint32_t timeout_s) {
  if (IsOpenOn(ip, port)) {
    return true;
  }
  Close();
  SetPeer(ip, port);
  const ConnectOutcome outcome =
      ConnectTcp({.ip = ip, .port = port, .local_port = local_port, .timeout_s = timeout_s}, interrupted());
  if (!outcome.is_local_port) {
    QUARN_LOG(log_lib::kError, "Failed to bind local port, system will auto assign one");
  }
  switch (outcome.result) {
    case ConnectResult::kNoSocketSystem:
      QUARN_LOG(log_lib::kError, "Initilize winsock error !");
      break;
    case ConnectResult::kBadAddress:
      QUARN_LOG(log_lib::kError, "TryOpen inet_pton error:%s", ip.c_str());
      break;
    case ConnectResult::kNotStarted:
      QUARN_LOG(log_lib::kError, "socket Connection error.");
      break;
    default:
      break;
  }
  if (!TakeSocket(outcome.socket)) {
    return false;
  }
  QUARN_LOG(log_lib::kProgress, "TryOpen succeed, IP %s port %u", ip.c_str(), unsigned{port});
  return true;
}

bool TcpClient::PlainOpen() {
  const ConnectOutcome outcome = ConnectTcp({.ip = lidar_ip(), .port = lidar_port()}, interrupted());
  switch (outcome.result) {
    case ConnectResult::kNoSocketSystem:
      std::cerr << "Initilize winsock error !" << std::endl;
      break;
    case ConnectResult::kBadAddress:
      QUARN_LOG(log_lib::kError, "Open inet_pton error:%s", lidar_ip().c_str());
      break;
    case ConnectResult::kNotStarted:
    case ConnectResult::kFailed:
    case ConnectResult::kWaitFailed:
      LogFailedConnect(outcome.error);
      break;
    default:
      break;
  }
  if (!TakeSocket(outcome.socket)) {
    return false;
  }
  QUARN_LOG(log_lib::kProgress, " succeed, IP %s port %u", lidar_ip().c_str(), unsigned{lidar_port()});
  return true;
}

void TcpClient::Close() {
  ReleaseSocket();
}

int TcpClient::Send(const std::uint8_t* data, std::uint16_t length, int flags) {
  if (interrupted() || (!IsOpened() && !PlainOpen())) {
    return -1;
  }
  const int sent = platform::SendBytes(socket(), {data, length}, flags);
  // The C library's error number, not the socket's: on systems where the two differ, every failed send is
  // logged.
  const int error = errno;
  if (sent != length && error != EINTR && error != EAGAIN && error != EWOULDBLOCK) {
    QUARN_LOG(log_lib::kError, "Send errno %d", error);
  }
  return sent;
}

int TcpClient::Receive(std::uint8_t* buffer, std::uint32_t length, int flags) {
  const auto start = Clock::now();
  const int received = ReceiveOnce(buffer, length, flags);
  const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
  if (elapsed >= kSlowReceive) {
    QUARN_LOG(log_lib::kTiming, "Receive executed: %dus", static_cast<int>(elapsed.count()));
  }
  return received;
}

int TcpClient::ReceiveOnce(std::uint8_t* buffer, std::uint32_t length, int flags) {
  if (interrupted() || (!IsOpened() && !PlainOpen())) {
    return -1;
  }
  const bool without_waiting = flags == kReceiveWithoutWaiting;
  if (without_waiting && !platform::SetNonBlocking(socket(), true)) {
    QUARN_LOG(log_lib::kError, "Failed to set non-blocking mode");
    return -1;
  }
  const int received = platform::ReceiveBytes(socket(), {buffer, length}, without_waiting ? 0 : flags);
  const int error = platform::LastSocketError();
  if (without_waiting) {
    if (!platform::SetNonBlocking(socket(), false)) {
      QUARN_LOG(log_lib::kError, "Failed to restore original socket mode");
    }
    return received;
  }
  if (received <= 0 && interrupted()) {
    return -1;
  }
  if (received == 0) {
    QUARN_LOG(log_lib::kError, "Connection closed by peer, recv returned 0");
  } else if (received < 0 && !platform::IsWouldBlock(error) && !platform::IsTimedOut(error)) {
    QUARN_LOG(log_lib::kError, "Receive failed, WSA error: %d", error);
  }
  return received;
}

}  // namespace quarn::lidar
