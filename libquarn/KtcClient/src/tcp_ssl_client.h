#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "libquarn/KtcClient/src/client_base.h"
#include "libquarn/KtcClient/src/tls_context.h"
#include "libquarn/KtcClient/src/tls_session.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

/// TLS over TCP, IP version 4. The paths of an open are borrowed until the next one: a reconnection reads
/// the files again. See InitSslClient for what they do.
class TcpSslClient : public ClientBase {
 public:
  TcpSslClient() = default;
  ~TcpSslClient() override;

  /// Neither open goes on from a TCP connection that stands: see the note in the source.
  bool Open(const std::string& ip, std::uint16_t port, bool auto_receive, const char* cert,
            const char* private_key, const char* ca) override;
  bool TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port, bool auto_receive,
               const char* cert, const char* private_key, const char* ca, std::uint32_t timeout_s) override;
  void Close() override;
  bool IsOpened() const override { return opened_; }

  /// On a closed transport both first connect to the last address once more.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;
  /// All `length` bytes or -1: what came short of them is lost. There is no read without waiting (-1).
  int Receive(std::uint8_t* buffer, std::uint32_t length, int flags) override;

  bool SetReceiveTimeout(std::uint32_t receive_ms) override;
  int SetTimeout(std::uint32_t receive_ms, std::uint32_t send_ms) override;
  void SetReceiveBufferSize(const std::uint32_t& size) override;
  void Interrupt() override;

  /// The two steps of an open around the TCP connection. A context from the PEM files of an open:
  bool CreateContext(const char* cert, const char* private_key, const char* ca);
  /// Handshake and check of the peer on a connected socket of tcp_open or tcp_try_open, which the transport
  /// takes over, also when it fails and closes. Blocks as long as the peer keeps silent.
  bool StartSession(platform::SocketHandle connected);

 private:
  bool PlainOpen();
  bool GoOn(int connected);
  bool TakeSocket(platform::SocketHandle connected);
  int ReceiveAll(std::uint8_t* buffer, std::uint32_t length);
  bool IsOpenOn(const std::string& ip, std::uint16_t port) const;
  bool HasSocket() const { return socket_ != platform::kInvalidSocket; }

  // Used by the thread that holds the transport.
  std::string lidar_ip_;
  std::uint16_t lidar_port_ = 0;
  std::uint32_t receive_buffer_size_ = 4096;
  std::uint32_t receive_timeout_ms_ = 500;
  std::uint32_t send_timeout_ms_ = 500;
  TlsContext context_;

  // Written under handle_mutex_, so that an interrupt never shuts down a descriptor that was closed and
  // given to somebody else in the meantime.
  std::mutex handle_mutex_;
  std::atomic<platform::SocketHandle> socket_{platform::kInvalidSocket};

  // Used by the thread that holds the transport.
  std::unique_ptr<TlsSession> session_;
  const char* cert_ = nullptr;
  const char* private_key_ = nullptr;
  const char* ca_ = nullptr;

  std::atomic<bool> opened_{false};
  std::atomic<bool> interrupted_{false};
};

}  // namespace quarn::lidar
