#include "libquarn/Platform/src/socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>

namespace quarn::platform {
namespace {

int Descriptor(SocketHandle socket) {
  return static_cast<int>(socket);
}

sockaddr_in MakeAddress(in_addr ip, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr = ip;
  address.sin_port = htons(port);
  return address;
}

template <typename T>
bool SetOption(SocketHandle socket, int option, const T& value) {
  return setsockopt(Descriptor(socket), SOL_SOCKET, option, &value, sizeof(value)) == 0;
}

bool SetTimeoutOption(SocketHandle socket, int option, std::uint32_t milliseconds) {
  timeval value{};
  value.tv_sec = static_cast<decltype(value.tv_sec)>(milliseconds / 1000U);
  value.tv_usec = static_cast<decltype(value.tv_usec)>(milliseconds % 1000U * 1000U);
  return SetOption(socket, option, value);
}

// poll, not select: a program that holds many files open has descriptors beyond select's fixed set.
int WaitFor(SocketHandle socket, short events, int timeout_ms) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(std::max(timeout_ms, 0));
  pollfd entry{Descriptor(socket), events, 0};
  int remaining = timeout_ms;
  for (;;) {
    const int ready = poll(&entry, 1, remaining);
    if (ready > 0) {
      if ((entry.revents & POLLNVAL) != 0) {
        errno = EBADF;
        return -1;
      }
      return 1;
    }
    if (ready == 0 || errno != EINTR) {
      return ready;
    }
    if (timeout_ms >= 0) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
      remaining = static_cast<int>(std::max<decltype(left)>(left, 0));
    }
  }
}

std::size_t ClampToInt(std::size_t size) {
  return std::min(size, static_cast<std::size_t>(std::numeric_limits<int>::max()));
}

}  // namespace

bool StartUpSockets() {
  return true;
}

void CleanUpSockets() {}

SocketHandle CreateTcpSocket() {
  return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP);
}

void CloseSocket(SocketHandle socket) {
  close(Descriptor(socket));
}

void ShutdownSocket(SocketHandle socket) {
  shutdown(Descriptor(socket), SHUT_RDWR);
}

bool IsIpV4(const std::string& ip) {
  in_addr parsed{};
  return inet_pton(AF_INET, ip.c_str(), &parsed) == 1;
}

bool BindPort(SocketHandle socket, std::uint16_t port) {
  const sockaddr_in address = MakeAddress(in_addr{htonl(INADDR_ANY)}, port);
  return bind(Descriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

int ConnectSocket(SocketHandle socket, const std::string& ip, std::uint16_t port) {
  in_addr parsed{};
  if (inet_pton(AF_INET, ip.c_str(), &parsed) != 1) {
    errno = EINVAL;
    return -1;
  }
  const sockaddr_in address = MakeAddress(parsed, port);
  return connect(Descriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

int WaitWritable(SocketHandle socket, int timeout_ms) {
  return WaitFor(socket, POLLOUT, timeout_ms);
}

int WaitReadable(SocketHandle socket, int timeout_ms) {
  return WaitFor(socket, POLLIN, timeout_ms);
}

int PendingSocketError(SocketHandle socket) {
  int error = 0;
  socklen_t size = sizeof(error);
  return getsockopt(Descriptor(socket), SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

bool SetNonBlocking(SocketHandle socket, bool non_blocking) {
  const int flags = fcntl(Descriptor(socket), F_GETFL);
  if (flags < 0) {
    return false;
  }
  const int wanted = non_blocking ? flags | O_NONBLOCK : flags & ~O_NONBLOCK;
  return fcntl(Descriptor(socket), F_SETFL, wanted) == 0;
}

bool SetSocketReceiveTimeout(SocketHandle socket, std::uint32_t milliseconds) {
  return SetTimeoutOption(socket, SO_RCVTIMEO, milliseconds);
}

bool SetSocketSendTimeout(SocketHandle socket, std::uint32_t milliseconds) {
  return SetTimeoutOption(socket, SO_SNDTIMEO, milliseconds);
}

std::optional<std::uint32_t> ReceiveBufferSize(SocketHandle socket) {
  int bytes = 0;
  socklen_t size = sizeof(bytes);
  if (getsockopt(Descriptor(socket), SOL_SOCKET, SO_RCVBUF, &bytes, &size) != 0) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(bytes);
}

bool SetReceiveBufferSize(SocketHandle socket, std::uint32_t bytes) {
  return SetOption(socket, SO_RCVBUF, static_cast<int>(ClampToInt(bytes)));
}

int SendBytes(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags) {
  return static_cast<int>(
      send(Descriptor(socket), bytes.data(), ClampToInt(bytes.size()), flags | MSG_NOSIGNAL));
}

int ReceiveBytes(SocketHandle socket, std::span<std::uint8_t> buffer, int flags) {
  // A socket with a time-out is never restarted by the system: a signal must not pass for a lost reply.
  ssize_t received = -1;
  do {
    received = recv(Descriptor(socket), buffer.data(), ClampToInt(buffer.size()), flags);
  } while (received < 0 && errno == EINTR);
  return static_cast<int>(received);
}

int LastSocketError() {
  return errno;
}

bool IsWouldBlock(int socket_error) {
  return socket_error == EWOULDBLOCK || socket_error == EAGAIN || socket_error == EINPROGRESS;
}

bool IsTimedOut(int socket_error) {
  return socket_error == ETIMEDOUT || socket_error == EWOULDBLOCK || socket_error == EAGAIN;
}

std::unique_ptr<TcpListener> TcpListener::Listen(const std::string& address, std::uint16_t port,
                                                 int backlog) {
  in_addr parsed{};
  if (inet_pton(AF_INET, address.c_str(), &parsed) != 1) {
    return nullptr;
  }
  const SocketHandle socket = CreateTcpSocket();
  if (socket == kInvalidSocket) {
    return nullptr;
  }
  // Owned from here on, so that every failure below closes the socket.
  std::unique_ptr<TcpListener> listener(new TcpListener(socket, port));
  sockaddr_in local = MakeAddress(parsed, port);
  socklen_t size = sizeof(local);
  SetOption(socket, SO_REUSEADDR, 1);
  if (bind(Descriptor(socket), reinterpret_cast<const sockaddr*>(&local), sizeof(local)) != 0 ||
      listen(Descriptor(socket), backlog) != 0 ||
      getsockname(Descriptor(socket), reinterpret_cast<sockaddr*>(&local), &size) != 0) {
    return nullptr;
  }
  listener->port_ = ntohs(local.sin_port);
  return listener;
}

TcpListener::~TcpListener() {
  CloseSocket(socket_);
}

SocketHandle TcpListener::Accept(int timeout_ms) {
  if (WaitReadable(socket_, timeout_ms) != 1) {
    return kInvalidSocket;
  }
  return accept4(Descriptor(socket_), nullptr, nullptr, SOCK_CLOEXEC);
}

}  // namespace quarn::platform
