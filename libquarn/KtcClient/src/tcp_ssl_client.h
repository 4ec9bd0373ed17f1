#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libquarn/KtcClient/src/socket_transport.h"
#include "libquarn/KtcClient/src/tls_context.h"
#include "libquarn/KtcClient/src/tls_session.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

/// TLS over TCP, IP version 4. The paths of an open are borrowed until the next one: a reconnection reads
/// the files again. See InitSslClient for what they do.
class TcpSslClient : public SocketTransport {
 public:
  TcpSslClient();
  ~TcpSslClient() override;

  /// Either open gives up once the TCP connection is established: see the note in the source.
  bool Open(const std::string& ip, std::uint16_t port, bool auto_receive, const char* cert,
            const char* private_key, const char* ca) override;
  bool TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port, bool auto_receive,
               const char* cert, const char* private_key, const char* ca, std::uint32_t timeout_s) override;
  void Close() override;

  /// On a closed transport both first connect to the last address once more.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;
  /// All `length` bytes or -1: what came short of them is lost. There is no read without waiting (-1).
  int Receive(std::uint8_t* buffer, std::uint32_t length, int flags) override;

  /// The two steps of an open around the TCP connection. A context from the PEM files of an open:
  bool CreateContext(const char* cert, const char* private_key, const char* ca);
  /// Handshake and check of the peer on a connected socket of tcp_open or tcp_try_open, which the transport
  /// takes over, also when it fails and closes. Blocks as long as the peer keeps silent.
  bool StartSession(platform::SocketHandle connected);

 private:
  bool PlainOpen();
  bool OnTcpConnected(int connected);
  int ReceiveAll(std::uint8_t* buffer, std::uint32_t length);

  // Used by the thread that holds the transport.
  TlsContext context_;
  std::unique_ptr<TlsSession> session_;
  const char* cert_ = nullptr;
  const char* private_key_ = nullptr;
  const char* ca_ = nullptr;
};

}  // namespace quarn::lidar
