#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "libquarn/KtcClient/src/client_base.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

/// The flags value that makes `Receive` a single read that does not wait.
inline constexpr int kReceiveWithoutWaiting = 255;

/// Plain TCP over IP version 4. The paths and the automatic receive of an open are ignored.
class TcpClient : public ClientBase {
 public:
  TcpClient() = default;
  ~TcpClient() override;

  /// True at once when already open on the same address and port; otherwise reconnects.
  bool Open(const std::string& ip, std::uint16_t port, bool auto_receive, const char* cert,
            const char* private_key, const char* ca) override;
  bool TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port, bool auto_receive,
               const char* cert, const char* private_key, const char* ca, std::uint32_t timeout_s) override;
  void Close() override;
  bool IsOpened() const override { return opened_; }

  /// On a closed transport both first connect to the last address once more.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;
  int Receive(std::uint8_t* buffer, std::uint32_t length, int flags) override;

  bool SetReceiveTimeout(std::uint32_t receive_ms) override;
  int SetTimeout(std::uint32_t receive_ms, std::uint32_t send_ms) override;
  void SetReceiveBufferSize(const std::uint32_t& size) override;
  void Interrupt() override;

 private:
  bool PlainOpen();
  bool CreateSocket();
  bool IsOpenOn(const std::string& ip, std::uint16_t port) const;
  bool HasSocket() const { return socket_ != platform::kInvalidSocket; }
  void ReleaseSocket();
  int ReceiveOnce(std::uint8_t* buffer, std::uint32_t length, int flags);

  // Used by the thread that holds the transport.
  std::string lidar_ip_;
  std::uint16_t lidar_port_ = 0;

  // Written under handle_mutex_, so that an interrupt never shuts down a descriptor that was closed and
  // given to somebody else in the meantime.
  std::mutex handle_mutex_;
  std::atomic<platform::SocketHandle> socket_{platform::kInvalidSocket};

  std::atomic<bool> opened_{false};
  std::atomic<bool> interrupted_{false};

  // Used by the thread that holds the transport.
  std::uint32_t receive_buffer_size_ = 4096;
  std::uint32_t receive_timeout_ms_ = 500;
  std::uint32_t send_timeout_ms_ = 500;
};

}  // namespace quarn::lidar
