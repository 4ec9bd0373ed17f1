#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "libquarn/KtcClient/src/client_base.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

/// Base of the transports over a TCP socket: the socket and its settings, the peer, and the interrupt. The
/// warnings about settings say "TcpClient" for either transport, so that one search of the log finds both;
/// the source file in the log line distinguishes them.
class SocketTransport : public ClientBase {
 public:
  bool IsOpened() const override { return opened_; }
  bool SetReceiveTimeout(std::uint32_t receive_ms) override;
  int SetTimeout(std::uint32_t receive_ms, std::uint32_t send_ms) override;
  void SetReceiveBufferSize(const std::uint32_t& size) override;
  void Interrupt() override;

 protected:
  /// `source_file`: a literal, the file named in log lines about settings.
  explicit SocketTransport(const char* source_file) : source_file_(source_file) {}

  void SetPeer(const std::string& ip, std::uint16_t port);
  bool IsOpenOn(const std::string& ip, std::uint16_t port) const;
  const std::string& lidar_ip() const { return lidar_ip_; }
  std::uint16_t lidar_port() const { return lidar_port_; }

  /// Takes over a connected socket, including its start-up of the socket system, and marks the transport
  /// open. False for kInvalidSocket or after an interrupt; the transport is then closed.
  bool TakeSocket(platform::SocketHandle socket);
  /// The same without marking it open: the handshake is still to come.
  bool HoldSocket(platform::SocketHandle socket);
  /// Marks the transport closed; closes the socket, if there is one, and cleans up its start-up of the socket
  /// system.
  void ReleaseSocket();
  platform::SocketHandle socket() const { return socket_; }

  void MarkOpened() { opened_ = true; }
  void MarkClosed() { opened_ = false; }
  const std::atomic<bool>& interrupted() const { return interrupted_; }

 private:
  bool HasSocket() const { return socket_ != platform::kInvalidSocket; }

  const char* const source_file_;

  // Used by the thread that holds the transport.
  std::string lidar_ip_;
  std::uint16_t lidar_port_ = 0;
  std::uint32_t receive_buffer_size_ = 4096;
  std::uint32_t receive_timeout_ms_ = 500;
  std::uint32_t send_timeout_ms_ = 500;

  // Written under handle_mutex_, so that an interrupt never shuts down a descriptor that was closed and
  // reused in the meantime.
  std::mutex handle_mutex_;
  std::atomic<platform::SocketHandle> socket_{platform::kInvalidSocket};

  std::atomic<bool> opened_{false};
  std::atomic<bool> interrupted_{false};
};

}  // namespace quarn::lidar
