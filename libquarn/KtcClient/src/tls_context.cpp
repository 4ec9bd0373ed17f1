#include "libquarn/KtcClient/src/tls_context.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <cstdint>

#include "libquarn/KtcClient/src/transport_log.h"

namespace quarn::lidar {
namespace {

constexpr std::uint64_t kEverything = OPENSSL_INIT_LOAD_SSL_STRINGS | OPENSSL_INIT_LOAD_CRYPTO_STRINGS |
                                      OPENSSL_INIT_ADD_ALL_CIPHERS | OPENSSL_INIT_ADD_ALL_DIGESTS;

bool IsGiven(const char* path) {
  return path != nullptr && *path != '\0';
}

// By default the library would ask for a pass phrase on the terminal and wait for it.
int RefusePassPhrase(char* /*buffer*/, int /*size*/, int /*for_writing*/, void* /*data*/) {
  return -1;
}

bool LoadIdentity(SSL_CTX* context, const char* cert, const char* private_key) {
  SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
  if (SSL_CTX_use_certificate_file(context, cert, SSL_FILETYPE_PEM) != 1) {
    QUARN_LOG_AS(kTransportLog, log_lib::kError, "load cert file failed,please check cert file path");
    return false;
  }
  if (SSL_CTX_use_PrivateKey_file(context, private_key, SSL_FILETYPE_PEM) != 1) {
    QUARN_LOG_AS(kTransportLog, log_lib::kError,
                 "load private key file failed,please check private key file path");
    return false;
  }
  if (SSL_CTX_check_private_key(context) != 1) {
    QUARN_LOG_AS(kTransportLog, log_lib::kError, "check private key failed");
    return false;
  }
  return true;
}

}  // namespace

void TlsContextDeleter::operator()(ssl_ctx_st* context) const {
  SSL_CTX_free(context);
}

TlsContext InitSslClient(const char* cert, const char* private_key, const char* ca) {
  // An earlier failure on this thread must not be mistaken for an error of the calls below.
  ERR_clear_error();
  OPENSSL_init_ssl(kEverything, nullptr);
  TlsContext context(SSL_CTX_new(TLS_client_method()));
  if (context == nullptr) {
    QUARN_LOG_AS(kTransportLog, log_lib::kError, "create SSL_CTX failed");
    return nullptr;
  }
  SSL_CTX_set_default_passwd_cb(context.get(), RefusePassPhrase);
  if (IsGiven(ca)) {
    QUARN_LOG_AS(kTransportLog, log_lib::kProgress, "ca path: %s", ca);
    if (SSL_CTX_load_verify_locations(context.get(), ca, nullptr) != 1) {
      QUARN_LOG_AS(kTransportLog, log_lib::kError, "load ca failed,please check ca file path");
      return nullptr;
    }
  }
  if (IsGiven(cert) && IsGiven(private_key)) {
    QUARN_LOG_AS(kTransportLog, log_lib::kProgress, "cert path: %s,\nprivate_key path: %s", cert,
                 private_key);
    if (!LoadIdentity(context.get(), cert, private_key)) {
      return nullptr;
    }
  }
  return context;
}

}  // namespace quarn::lidar
