#include "libquarn/KtcClient/src/socket_transport.h"

#include <optional>

#include "libquarn/Platform/src/logger.h"

namespace quarn::lidar {
void SocketTransport::SetPeer(const std::string& ip, std::uint16_t port) {
  lidar_ip_ = ip;
  lidar_port_ = port;
}

bool SocketTransport::IsOpenOn(const std::string& ip, std::uint16_t port) const {
  return opened_ && ip == lidar_ip_ && port == lidar_port_;
}

bool SocketTransport::TakeSocket(platform::SocketHandle socket) {
  if (socket == platform::kInvalidSocket) {
    return false;
  }
  if (!HoldSocket(socket)) {
    ReleaseSocket();
    return false;
  }
  opened_ = true;
  return true;
}

bool SocketTransport::HoldSocket(platform::SocketHandle socket) {
  const std::lock_guard lock(handle_mutex_);
  socket_ = socket;
  return !interrupted_;
}

void SocketTransport::ReleaseSocket() {
  opened_ = false;
  const std::lock_guard lock(handle_mutex_);
  const platform::SocketHandle closing = socket_.exchange(platform::kInvalidSocket);
  if (closing != platform::kInvalidSocket) {
    platform::CloseSocket(closing);
    platform::CleanUpSockets();
  }
}

bool SocketTransport::SetReceiveTimeout(std::uint32_t receive_ms) {
  if (!HasSocket()) {
    QUARN_LOG_AS(source_file_, log_lib::kWarning, "TcpClient not open");
    return false;
  }
  return platform::SetSocketReceiveTimeout(socket_, receive_ms);
}

int SocketTransport::SetTimeout(std::uint32_t receive_ms, std::uint32_t send_ms) {
  if (!HasSocket()) {
    QUARN_LOG_AS(source_file_, log_lib::kWarning, "TcpClient not open");
    return -1;
  }
  receive_timeout_ms_ = receive_ms;
  send_timeout_ms_ = send_ms;
  const bool set = platform::SetSocketReceiveTimeout(socket_, receive_timeout_ms_) &&
                   platform::SetSocketSendTimeout(socket_, send_timeout_ms_);
  return set ? 0 : -1;
}

void SocketTransport::SetReceiveBufferSize(const std::uint32_t& size) {
  if (!HasSocket()) {
    QUARN_LOG_AS(source_file_, log_lib::kWarning, "TcpClient not open");
    return;
  }
  receive_buffer_size_ = size;
  const std::optional<std::uint32_t> current = platform::ReceiveBufferSize(socket_);
  if (current && *current < receive_buffer_size_) {
    platform::SetReceiveBufferSize(socket_, receive_buffer_size_);
  }
}

void SocketTransport::Interrupt() {
  interrupted_ = true;
  const std::lock_guard lock(handle_mutex_);
  const platform::SocketHandle socket = socket_;
  if (socket != platform::kInvalidSocket) {
    platform::ShutdownSocket(socket);
  }
}

}  // namespace quarn::lidar
