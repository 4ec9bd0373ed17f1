#include "libquarn/Platform/src/socket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <limits>

#include "libquarn/Platform/src/poll_posix.h"
#include "libquarn/Platform/src/socket_address.h"

namespace quarn::platform {
namespace {

int ToDescriptor(SocketHandle socket) {
  return static_cast<int>(socket);
}

template <typename T>
bool SetOption(SocketHandle socket, int option, const T& value, int level = SOL_SOCKET) {
  return setsockopt(ToDescriptor(socket), level, option, &value, sizeof(value)) == 0;
}

bool SetTimeoutOption(SocketHandle socket, int option, std::uint32_t milliseconds) {
  timeval value{};
  value.tv_sec = static_cast<decltype(value.tv_sec)>(milliseconds / 1000U);
  value.tv_usec = static_cast<decltype(value.tv_usec)>(milliseconds % 1000U * 1000U);
  return SetOption(socket, option, value);
}

// 1: ready, 0: time-out, -1: failed, with errno. A negative time waits forever.
int WaitFor(SocketHandle socket, short events, std::chrono::microseconds timeout) {
  std::array<pollfd, 1> entries{{{ToDescriptor(socket), events, 0}}};
  const int ready = Poll(entries, timeout);
  if (ready > 0 && (entries[0].revents & POLLNVAL) != 0) {
    errno = EBADF;
    return -1;
  }
  return ready;
}

// The remainder of the socket's receive time-out; negative if it waits forever.
std::chrono::microseconds ReceiveTimeLeft(SocketHandle socket, std::chrono::steady_clock::time_point start) {
  timeval timeout{};
  socklen_t size = sizeof(timeout);
  if (getsockopt(ToDescriptor(socket), SOL_SOCKET, SO_RCVTIMEO, &timeout, &size) != 0 ||
      (timeout.tv_sec == 0 && timeout.tv_usec == 0)) {
    return std::chrono::microseconds(-1);
  }
  const auto end = start + std::chrono::seconds(timeout.tv_sec) + std::chrono::microseconds(timeout.tv_usec);
  return std::max(std::chrono::ceil<std::chrono::microseconds>(end - std::chrono::steady_clock::now()),
                  std::chrono::microseconds(0));
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

SocketHandle CreateUdpSocket() {
  return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
}

void CloseSocket(SocketHandle socket) {
  close(ToDescriptor(socket));
}

void ShutdownSocket(SocketHandle socket) {
  shutdown(ToDescriptor(socket), SHUT_RDWR);
}

bool BindPort(SocketHandle socket, std::uint16_t port) {
  const sockaddr_in address = MakeAddress(AnyAddress(), port);
  return bind(ToDescriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

// This system delivers a group's datagrams only to sockets bound to any address or to the group: with a
// group, the local address only selects the interface of the membership.
bool BindDatagramPort(SocketHandle socket, const std::string& local_ip, std::uint16_t port,
                      const std::string& multicast_group) {
  std::optional<in_addr> local = ParseLocalAddress(local_ip);
  if (!local) {
    errno = EINVAL;
    return false;
  }
  const std::optional<in_addr> group = ParseAddress(multicast_group);
  if (group && IN_MULTICAST(ntohl(group->s_addr))) {
    local = AnyAddress();
  }
  const sockaddr_in address = MakeAddress(*local, port);
  return bind(ToDescriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

bool JoinMulticast(SocketHandle socket, const std::string& group, const std::string& local_ip) {
  const std::optional<in_addr> multicast = ParseAddress(group);
  const std::optional<in_addr> local = ParseLocalAddress(local_ip);
  if (!multicast || !local) {
    errno = EINVAL;
    return false;
  }
  // Otherwise the socket would also receive datagrams of groups that other programs on this machine have
  // joined.
  SetOption(socket, IP_MULTICAST_ALL, 0, IPPROTO_IP);
  return SetOption(socket, IP_ADD_MEMBERSHIP, ip_mreq{*multicast, *local}, IPPROTO_IP);
}

bool SetMulticastInterface(SocketHandle socket, const std::string& local_ip) {
  const std::optional<in_addr> local = ParseAddress(local_ip);
  if (!local) {
    errno = EINVAL;
    return false;
  }
  return SetOption(socket, IP_MULTICAST_IF, *local, IPPROTO_IP);
}

bool SetMulticastHops(SocketHandle socket, std::uint8_t hops) {
  return SetOption(socket, IP_MULTICAST_TTL, hops, IPPROTO_IP);
}

bool AllowAddressReuse(SocketHandle socket) {
  return SetOption(socket, SO_REUSEADDR, 1);
}

std::uint16_t LocalPort(SocketHandle socket) {
  sockaddr_in local{};
  socklen_t size = sizeof(local);
  return getsockname(ToDescriptor(socket), reinterpret_cast<sockaddr*>(&local), &size) == 0
             ? ntohs(local.sin_port)
             : std::uint16_t{0};
}

int ConnectSocket(SocketHandle socket, const std::string& ip, std::uint16_t port) {
  const std::optional<in_addr> parsed = ParseAddress(ip);
  if (!parsed) {
    errno = EINVAL;
    return -1;
  }
  const sockaddr_in address = MakeAddress(*parsed, port);
  return connect(ToDescriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

int WaitWritable(SocketHandle socket, int timeout_ms) {
  return WaitFor(socket, POLLOUT, std::chrono::milliseconds(timeout_ms));
}

int WaitReadable(SocketHandle socket, int timeout_ms) {
  return WaitFor(socket, POLLIN, std::chrono::milliseconds(timeout_ms));
}

int WaitReadableFor(SocketHandle socket, std::chrono::microseconds timeout) {
  if (timeout.count() < 0) {
    errno = EINVAL;
    return -1;
  }
  return WaitFor(socket, POLLIN, timeout);
}

int PendingSocketError(SocketHandle socket) {
  int error = 0;
  socklen_t size = sizeof(error);
  return getsockopt(ToDescriptor(socket), SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

bool SetNonBlocking(SocketHandle socket, bool non_blocking) {
  const int flags = fcntl(ToDescriptor(socket), F_GETFL);
  if (flags < 0) {
    return false;
  }
  const int wanted = non_blocking ? flags | O_NONBLOCK : flags & ~O_NONBLOCK;
  return fcntl(ToDescriptor(socket), F_SETFL, wanted) == 0;
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
  if (getsockopt(ToDescriptor(socket), SOL_SOCKET, SO_RCVBUF, &bytes, &size) != 0) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(bytes);
}

bool SetReceiveBufferSize(SocketHandle socket, std::uint32_t bytes) {
  return SetOption(socket, SO_RCVBUF, static_cast<int>(ClampToInt(bytes)));
}

int SendBytes(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags) {
  return static_cast<int>(
      send(ToDescriptor(socket), bytes.data(), ClampToInt(bytes.size()), flags | MSG_NOSIGNAL));
}

int ReceiveBytes(SocketHandle socket, std::span<std::uint8_t> buffer, int flags) {
  const auto receive = [&](int more_flags) {
    return recv(ToDescriptor(socket), buffer.data(), ClampToInt(buffer.size()), flags | more_flags);
  };
  const auto start = std::chrono::steady_clock::now();
  ssize_t received = receive(0);
  if (received < 0 && errno == EINTR) {
    // A signal must not be mistaken for a lost reply, and repeated ones must not extend the socket's
    // time-out.
    const int ready = WaitFor(socket, POLLIN, ReceiveTimeLeft(socket, start));
    if (ready == 0) {
      errno = EAGAIN;
    }
    received = ready > 0 ? receive(MSG_DONTWAIT) : -1;
  }
  return static_cast<int>(received);
}

int SendDatagram(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags, const Endpoint& to) {
  const sockaddr_in address = MakeAddress(in_addr{to.ip}, to.port);
  return static_cast<int>(sendto(ToDescriptor(socket), bytes.data(), ClampToInt(bytes.size()),
                                 flags | MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                                 sizeof(address)));
}

int ReceiveDatagram(SocketHandle socket, std::span<std::uint8_t> buffer, int flags, Endpoint& from) {
  sockaddr_in address{};
  socklen_t size = sizeof(address);
  const ssize_t received = recvfrom(ToDescriptor(socket), buffer.data(), ClampToInt(buffer.size()), flags,
                                    reinterpret_cast<sockaddr*>(&address), &size);
  if (received >= 0) {
    from = {address.sin_addr.s_addr, ntohs(address.sin_port)};
  }
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
  const std::optional<in_addr> parsed = ParseAddress(address);
  if (!parsed) {
    return nullptr;
  }
  const SocketHandle socket = CreateTcpSocket();
  if (socket == kInvalidSocket) {
    return nullptr;
  }
  // Owns the socket from here on, so that every failure below closes it.
  std::unique_ptr<TcpListener> listener(new TcpListener(socket, port));
  sockaddr_in local = MakeAddress(*parsed, port);
  socklen_t size = sizeof(local);
  SetOption(socket, SO_REUSEADDR, 1);
  if (bind(ToDescriptor(socket), reinterpret_cast<const sockaddr*>(&local), sizeof(local)) != 0 ||
      listen(ToDescriptor(socket), backlog) != 0 ||
      getsockname(ToDescriptor(socket), reinterpret_cast<sockaddr*>(&local), &size) != 0) {
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
  return accept4(ToDescriptor(socket_), nullptr, nullptr, SOCK_CLOEXEC);
}

}  // namespace quarn::platform
