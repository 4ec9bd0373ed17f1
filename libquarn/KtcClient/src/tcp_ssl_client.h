#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libquarn/KtcClient/src/socket_transport.h"
#include "libquarn/KtcClient/src/tls_context.h"
#include "libquarn/KtcClient/src/tls_session.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::lidar {

/// TLS over TCP (IPv4). The path texts passed to an open must stay valid until the next one: a reconnection
/// reads the files again. InitSslClient explains their meaning.
class TcpSslClient : public SocketTransport {
 public:
  TcpSslClient();
  ~TcpSslClient() override;

  /// Both opens give up once the TCP connection is established: see the note in the source.
  bool Open(const std::string& ip, std::uint16_t port, bool auto_receive, const char* cert,
            const char* private_key, const char* ca) override;
  bool TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port, bool auto_receive,
               const char* cert, const char* private_key, const char* ca, std::uint32_t timeout_s) override;
  void Close() override;

  /// On a closed transport both first connect to the last address once more.
  int Send(const std::uint8_t* data, std::uint16_t length, int flags) override;
  /// Receives all `length` bytes, otherwise returns -1 and the bytes of an incomplete read are lost. Reading
  /// without waiting is not supported (-1).
  int Receive(std::uint8_t* buffer, std::uint32_t length, int flags) override;

  /// The two steps of an open around the TCP connection. First: creates the context from the PEM files.
  bool CreateContext(const char* cert, const char* private_key, const char* ca);
  /// Second: performs the handshake and verifies the peer on a connected socket from tcp_open or
  /// tcp_try_open. Takes over the socket and closes it on failure. Blocks as long as the peer is silent.
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
