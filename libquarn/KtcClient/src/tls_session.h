#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "libquarn/Platform/src/socket.h"

struct ssl_st;
struct ssl_ctx_st;

namespace quarn::lidar {

/// One TLS connection over a connected socket, which stays its owner's and must outlive the session's use.
/// Used by one thread at a time; shutting the socket down ends a call that blocks.
class TlsSession {
 public:
  /// Null when the library can't make one. Nothing goes out yet.
  static std::unique_ptr<TlsSession> Create(ssl_ctx_st* context, platform::SocketHandle socket);
  ~TlsSession();
  TlsSession(const TlsSession&) = delete;
  TlsSession& operator=(const TlsSession&) = delete;

  /// The handshake of the side that the context was made for, client or server. False when the peer or the
  /// context refuses.
  bool Handshake();
  /// Whether the context's authorities vouch for the peer's certificate; valid after the handshake.
  bool IsPeerVerified() const;

  /// One write of everything, one read of at most the buffer: the bytes moved, or 0 or less as the library
  /// reports it. errno is 0 unless the socket's call left an error of its own.
  int Write(std::span<const std::uint8_t> bytes);
  int Read(std::span<std::uint8_t> buffer);

  /// Tells the peer that nothing more comes, without waiting for it. Does nothing after a failure.
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
