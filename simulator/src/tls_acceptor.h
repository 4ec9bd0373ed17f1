#pragma once

#include <memory>
#include <string>

#include "libquarn/KtcClient/src/tls_context.h"
#include "libquarn/Platform/src/socket.h"
#include "simulator/src/byte_stream.h"

namespace varkel::sim {

/// Paths of PEM files.
struct TlsOptions {
  std::string certificate{};  ///< the sensor's own, followed by those of its authorities, if any
  std::string key{};          ///< its private key, without a pass phrase
  std::string ca{};           ///< authorities for client certificates; empty: none is requested
  bool require_client_certificate = false;  ///< needs `ca`; otherwise only a given certificate is checked
};

/// The sensor's side of TLS 1.2 and 1.3. Thread-safe; never logs or shows the files' contents.
class TlsAcceptor {
 public:
  /// Raises std::runtime_error with a sentence that names the file if one can't be used.
  explicit TlsAcceptor(const TlsOptions& options);

  /// Performs the handshake on a connected socket, for as long as the client takes. Null if client or sensor
  /// rejects the other.
  std::unique_ptr<ByteStream> Accept(quarn::platform::SocketHandle socket) const;

 private:
  const quarn::lidar::TlsContext context_;
};

}  // namespace varkel::sim
