#pragma once

#include <memory>

struct ssl_ctx_st;

namespace quarn::lidar {

struct TlsContextDeleter {
  void operator()(ssl_ctx_st* context) const;
};

/// OpenSSL's client context: the trusted authorities and the client's identity.
using TlsContext = std::unique_ptr<ssl_ctx_st, TlsContextDeleter>;

/// Creates a client context for any TLS version; null if a file can't be used, which is logged.
///
/// The arguments are paths of PEM files, null or empty if there is none. `ca` holds the trusted authorities
/// for the peer's certificate. `cert` and `private_key` identify the client and are used only together; the
/// handshake then fails if `ca` does not verify the peer. A key protected by a pass phrase is refused. Paths
/// are logged, contents never.
TlsContext InitSslClient(const char* cert, const char* private_key, const char* ca);

}  // namespace quarn::lidar
