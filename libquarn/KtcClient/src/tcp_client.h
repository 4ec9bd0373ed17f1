#pragma once

#include <cstdint>
#include <string>

#include "libquarn/KtcClient/src/socket_transport.h"

namespace quarn::lidar {

/// The flags value that makes `Receive` a single read that does not wait.
inline constexpr int kReceiveWithoutWaiting = 255;

/// Plain TCP over IPv4. Opening ignores the paths and the automatic receive.
class TcpClient : public SocketTransport {
 public:
  TcpClient();
  ~TcpClient() override;

  /// Returns true at once if already open to the same address and port; otherwise reconnects.
  bool Open(const std::string& ip, std::uint16_t port, bool auto_receive, const char* cert,
            const char* private_key, const char* ca) override;
  bool TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port, bool auto_receive,
               const char* cert, const char* private_key, const char* ca, std::uint32_t timeout_s) override;
  void Close() override;

  /// On a closed transport both first connect to the last address once more.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;
  int Receive(std::uint8_t* buffer, std::uint32_t length, int flags) override;

 private:
  /// Connects to the last address, with the system's own time-out.
  bool PlainOpen();
  int ReceiveOnce(std::uint8_t* buffer, std::uint32_t length, int flags);
};

}  // namespace quarn::lidar
