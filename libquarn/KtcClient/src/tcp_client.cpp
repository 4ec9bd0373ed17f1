#include "libquarn/KtcClient/src/tcp_client.h"

#include <cerrno>
#include <chrono>
#include <iostream>

#include "libquarn/KtcClient/src/connecting.h"
#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/KtcClient/src/tcp_client";

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kSlowReceive{1'000'000};

}  // namespace

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
  if (!platform::StartUpSockets()) {
    QUARN_LOG(log_lib::kError, "Initilize winsock error !");
    return false;
  }
  if (!CreateSocket()) {
    return false;
  }
  if (local_port != 0 && !platform::BindPort(socket(), local_port)) {
    QUARN_LOG(log_lib::kError, "Failed to bind local port, system will auto assign one");
  }
  if (!platform::IsIpV4(ip)) {
    Close();
    QUARN_LOG(log_lib::kError, "TryOpen inet_pton error:%s", ip.c_str());
    return false;
  }
  if (StartConnecting(socket(), lidar_ip(), lidar_port()) != 0) {
    QUARN_LOG(log_lib::kError, "socket Connection error.");
    Close();
    return false;
  }
  if (!WaitConnected(socket(), timeout_s, interrupted()) || platform::PendingSocketError(socket()) != 0) {
    Close();
    return false;
  }
  QUARN_LOG(log_lib::kProgress, "TryOpen succeed, IP %s port %u", ip.c_str(), unsigned{port});
  platform::SetNonBlocking(socket(), false);
  MarkOpened();
  return true;
}

// Blocks as long as the system tries, but in slices: an interrupt must not wait for the system.
bool TcpClient::PlainOpen() {
  if (!platform::StartUpSockets()) {
    std::cerr << "Initilize winsock error !" << std::endl;
    return false;
  }
  if (!CreateSocket()) {
    return false;
  }
  if (!platform::IsIpV4(lidar_ip())) {
    Close();
    QUARN_LOG(log_lib::kError, "Open inet_pton error:%s", lidar_ip().c_str());
    return false;
  }
  int error = StartConnecting(socket(), lidar_ip(), lidar_port());
  if (error == 0) {
    error = WaitConnected(socket(), std::nullopt, interrupted()) ? platform::PendingSocketError(socket())
                                                                 : EINPROGRESS;
  }
  if (error != 0) {
    if (error == EINPROGRESS) {
      QUARN_LOG(log_lib::kWarning, "connect lidar time out");
    } else if (error != EWOULDBLOCK) {
      QUARN_LOG(log_lib::kError, "connect failed %d", error);
    }
    Close();
    QUARN_LOG(log_lib::kError, "connect lidar fail errno %d", error);
    return false;
  }
  platform::SetNonBlocking(socket(), false);
  QUARN_LOG(log_lib::kProgress, " succeed, IP %s port %u", lidar_ip().c_str(), unsigned{lidar_port()});
  MarkOpened();
  return true;
}

// Pairs the start-up that the caller made: a failure cleans it up.
bool TcpClient::CreateSocket() {
  const platform::SocketHandle created = platform::CreateTcpSocket();
  if (created == platform::kInvalidSocket) {
    platform::CleanUpSockets();
    return false;
  }
  TakeSocket(created);
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
  // The C library's number, not the socket's: where the two differ, a failed send is always logged.
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
