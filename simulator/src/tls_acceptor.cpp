#include "simulator/src/tls_acceptor.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <stdexcept>
#include <system_error>
#include <utility>

#include "libquarn/KtcClient/src/tls_session.h"

namespace varkel::sim {
namespace {

using quarn::lidar::TlsContext;
using quarn::lidar::TlsSession;

class TlsStream : public ByteStream {
 public:
  explicit TlsStream(std::unique_ptr<TlsSession> session) : session_(std::move(session)) {}

  int Receive(std::span<std::uint8_t> buffer) override { return session_->Read(buffer); }
  bool SendAll(std::span<const std::uint8_t> bytes) override {
    return bytes.empty() || session_->Write(bytes) > 0;  // one write sends all of it or fails
  }
  void End() override { session_->Shutdown(); }

 private:
  const std::unique_ptr<TlsSession> session_;
};

/// Without this the library would ask for a pass phrase on the terminal and wait for it.
int RefusePassPhrase(char* /*buffer*/, int /*size*/, int /*for_writing*/, void* /*data*/) {
  return -1;
}

/// Why the library's last call failed, as reported by the library or the system. Later errors are only
/// consequences of the first one.
std::string FirstReason() {
  const unsigned long error = ERR_peek_error();
  if (ERR_SYSTEM_ERROR(error)) return std::generic_category().message(ERR_GET_REASON(error));
  const char* const reason = ERR_reason_error_string(error);
  return reason == nullptr ? "unknown reason" : reason;
}

void Require(bool usable, const std::string& what) {
  if (!usable) throw std::runtime_error(what + " can't be used: " + FirstReason() + ".");
}

void AskForClientCertificates(SSL_CTX* context, const TlsOptions& options) {
  if (options.ca.empty()) {
    if (options.require_client_certificate) {
      throw std::runtime_error(
          "Client certificates can't be required without certificate authorities to check them.");
    }
    return;
  }
  Require(SSL_CTX_load_verify_locations(context, options.ca.c_str(), nullptr) == 1,
          "The authorities in \"" + options.ca + "\"");
  const int required = options.require_client_certificate ? SSL_VERIFY_FAIL_IF_NO_PEER_CERT : 0;
  SSL_CTX_set_verify(context, SSL_VERIFY_PEER | required, nullptr);
}

TlsContext MakeContext(const TlsOptions& options) {
  ERR_clear_error();
  TlsContext context(SSL_CTX_new(TLS_server_method()));
  Require(context != nullptr, "TLS");
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  // Every client performs a full handshake: a resumed session would skip the check of its certificate.
  SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
  SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET);
  SSL_CTX_set_num_tickets(context.get(), 0);
  SSL_CTX_set_default_passwd_cb(context.get(), RefusePassPhrase);
  Require(SSL_CTX_use_certificate_chain_file(context.get(), options.certificate.c_str()) == 1,
          "The certificate in \"" + options.certificate + "\"");
  Require(SSL_CTX_use_PrivateKey_file(context.get(), options.key.c_str(), SSL_FILETYPE_PEM) == 1 &&
              SSL_CTX_check_private_key(context.get()) == 1,
          "The private key in \"" + options.key + "\"");
  AskForClientCertificates(context.get(), options);
  return context;
}

}  // namespace

TlsAcceptor::TlsAcceptor(const TlsOptions& options) : context_(MakeContext(options)) {}

std::unique_ptr<ByteStream> TlsAcceptor::Accept(quarn::platform::SocketHandle socket) const {
  std::unique_ptr<TlsSession> session = TlsSession::Create(context_.get(), socket);
  if (!session || !session->Handshake()) return nullptr;
  return std::make_unique<TlsStream>(std::move(session));
}

}  // namespace varkel::sim
