#include "libquarn/KtcClient/src/tls_session.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace quarn::lidar {
namespace {

// The library uses these functions instead of its own socket calls: its own write to a connection that the
// peer has closed raises a signal, which would end the program.
platform::SocketHandle SocketOf(BIO* bio) {
  return *static_cast<const platform::SocketHandle*>(BIO_get_data(bio));
}

bool IsPassing(int socket_error) {
  return platform::IsWouldBlock(socket_error) || platform::IsTimedOut(socket_error);
}

int WriteSocket(BIO* bio, const char* data, int size) {
  BIO_clear_retry_flags(bio);
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size));
  const int sent = platform::SendBytes(SocketOf(bio), bytes, 0);
  if (sent < 0 && IsPassing(platform::LastSocketError())) {
    BIO_set_retry_write(bio);
  }
  return sent;
}

int ReadSocket(BIO* bio, char* data, int size) {
  BIO_clear_retry_flags(bio);
  const std::span buffer(reinterpret_cast<std::uint8_t*>(data), static_cast<std::size_t>(size));
  const int received = platform::ReceiveBytes(SocketOf(bio), buffer, 0);
  if (received < 0 && IsPassing(platform::LastSocketError())) {
    BIO_set_retry_read(bio);
  } else if (received == 0) {
    BIO_set_flags(bio, BIO_FLAGS_IN_EOF);
  }
  return received;
}

long ControlSocket(BIO* bio, int command, long /*number*/, void* /*pointer*/) {
  switch (command) {
    case BIO_CTRL_FLUSH:  // nothing is buffered here
      return 1;
    case BIO_CTRL_EOF:
      return BIO_test_flags(bio, BIO_FLAGS_IN_EOF) != 0 ? 1 : 0;
    default:
      return 0;
  }
}

struct BioMethodDeleter {
  void operator()(BIO_METHOD* method) const { BIO_meth_free(method); }
};

const BIO_METHOD* SocketMethod() {
  static const std::unique_ptr<BIO_METHOD, BioMethodDeleter> method = [] {
    std::unique_ptr<BIO_METHOD, BioMethodDeleter> made(
        BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "platform socket"));
    if (made != nullptr) {
      BIO_meth_set_write(made.get(), WriteSocket);
      BIO_meth_set_read(made.get(), ReadSocket);
      BIO_meth_set_ctrl(made.get(), ControlSocket);
    }
    return made;
  }();
  return method.get();
}

int ClampToInt(std::size_t size) {
  return static_cast<int>(std::min(size, static_cast<std::size_t>(std::numeric_limits<int>::max())));
}

// Clears old errors, which both the library's queue and errno keep.
void ForgetErrors() {
  ERR_clear_error();
  errno = 0;
}

}  // namespace

void TlsSession::SslDeleter::operator()(ssl_st* ssl) const {
  SSL_free(ssl);
}

std::unique_ptr<TlsSession> TlsSession::Create(ssl_ctx_st* context, platform::SocketHandle socket) {
  std::unique_ptr<TlsSession> session(new TlsSession(socket));
  return session->Bind(context) ? std::move(session) : nullptr;
}

TlsSession::~TlsSession() = default;

bool TlsSession::Bind(ssl_ctx_st* context) {
  ForgetErrors();
  const BIO_METHOD* const method = SocketMethod();
  ssl_.reset(SSL_new(context));
  BIO* const bio = ssl_ != nullptr && method != nullptr ? BIO_new(method) : nullptr;
  if (bio == nullptr) {
    return false;
  }
  BIO_set_data(bio, &socket_);
  BIO_set_init(bio, 1);
  SSL_set_bio(ssl_.get(), bio, bio);  // owns it from here on
  return true;
}

bool TlsSession::Handshake() {
  ForgetErrors();
  return Checked(SSL_is_server(ssl_.get()) != 0 ? SSL_accept(ssl_.get()) : SSL_connect(ssl_.get())) == 1;
}

bool TlsSession::IsPeerVerified() const {
  return SSL_get_verify_result(ssl_.get()) == X509_V_OK;
}

int TlsSession::Write(std::span<const std::uint8_t> bytes) {
  ForgetErrors();
  return Checked(SSL_write(ssl_.get(), bytes.data(), ClampToInt(bytes.size())));
}

int TlsSession::Read(std::span<std::uint8_t> buffer) {
  ForgetErrors();
  return Checked(SSL_read(ssl_.get(), buffer.data(), ClampToInt(buffer.size())));
}

// Records failures from which the connection does not recover, as opposed to temporary ones.
int TlsSession::Checked(int result) {
  if (result <= 0) {
    const int error_number = errno;
    const int error = SSL_get_error(ssl_.get(), result);
    broken_ = broken_ || error == SSL_ERROR_SSL || error == SSL_ERROR_SYSCALL;
    errno = error_number;
  }
  return result;
}

void TlsSession::Shutdown() {
  if (broken_ || SSL_is_init_finished(ssl_.get()) == 0) {
    return;
  }
  // A peer that no longer reads must not delay the close.
  platform::SetNonBlocking(socket_, true);
  ForgetErrors();
  SSL_shutdown(ssl_.get());
  ERR_clear_error();
}

}  // namespace quarn::lidar
