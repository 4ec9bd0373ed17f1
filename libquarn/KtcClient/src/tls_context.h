#pragma once

#include <memory>

struct ssl_ctx_st;

namespace quarn::lidar {

struct TlsContextDeleter {
  void operator()(ssl_ctx_st* context) const;
};

/// OpenSSL's context of a client: whom it trusts and who it is.
using TlsContext = std::unique_ptr<ssl_ctx_st, TlsContextDeleter>;

/// A client context of any TLS version; null when a file can't be used, which the log explains.
///
/// The three are paths of PEM files, null or empty when there is none. `ca` is trusted to vouch for the
/// peer. `cert` and `private_key` are taken only together: they identify the client, and a peer that
/// `ca` does not vouch for then fails the handshake. A key that is locked by a pass phrase is refused.
/// Paths are logged, what the files hold never is.
TlsContext InitSslClient(const char* cert, const char* private_key, const char* ca);

}  // namespace quarn::lidar
