#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "libquarn/Platform/src/socket.h"

struct ssl_st;
struct ssl_ctx_st;

namespace quarn::lidar {

/// One TLS connection over a connected socket, which the caller owns and which must outlive the session. Used
/// by one thread at a time; shutting down the socket ends a blocked call.
class TlsSession {
 public:
  /// Null if the library can't create one. Sends nothing yet.
  static std::unique_ptr<TlsSession> Create(ssl_ctx_st* context, platform::SocketHandle socket);
  ~TlsSession();
  TlsSession(const TlsSession&) = delete;
  TlsSession& operator=(const TlsSession&) = delete;

  /// Performs the handshake as client or server, depending on the context. False if either side refuses.
  bool Handshake();
  /// Whether the context's authorities verify the peer's certificate; valid after the handshake.
  bool IsPeerVerified() const;

  /// Writes all bytes in one call; reads at most the size of the buffer. Returns the number of bytes, or the
  /// library's result of 0 or less. errno is 0 unless the socket call set it.
  int Write(std::span<const std::uint8_t> bytes);
  int Read(std::span<std::uint8_t> buffer);

  /// Notifies the peer of the end without waiting for it. Does nothing after a failure.
  void Shutdown();

 private:
  struct SslDeleter {
    void operator()(ssl_st* ssl) const;
  };

  explicit TlsSession(platform::SocketHandle socket) : socket_(socket) {}
  bool Bind(ssl_ctx_st* context);
  int Checked(int result);

  platform::SocketHandle socket_;  // the library reads it through a pointer
  std::unique_ptr<ssl_st, SslDeleter> ssl_;
  bool broken_ = false;
};

}  // namespace quarn::lidar
