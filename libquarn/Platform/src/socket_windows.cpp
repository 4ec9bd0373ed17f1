// The socket headers must come before the system's main header, which may include their predecessor.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <windows.h>

#include "libquarn/Platform/src/socket.h"

#include <algorithm>
#include <limits>

#include "libquarn/Platform/src/socket_address.h"

namespace quarn::platform {
namespace {

// The system's invalid handle is all ones, which equals kInvalidSocket (-1), so handles convert without a
// special case.
static_assert(static_cast<SocketHandle>(INVALID_SOCKET) == kInvalidSocket);

SOCKET Native(SocketHandle socket) {
  return static_cast<SOCKET>(socket);
}

template <typename T>
bool SetOption(SocketHandle socket, int option, const T& value, int level = SOL_SOCKET) {
  return setsockopt(Native(socket), level, option, reinterpret_cast<const char*>(&value),
                    static_cast<int>(sizeof(value))) == 0;
}

// Overlapped as socket() makes them, so that blocked calls can be cancelled; not inherited by children.
SocketHandle CreateSocket(int type, int protocol) {
  return static_cast<SocketHandle>(
      WSASocketW(AF_INET, type, protocol, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

int ClampToInt(std::size_t size) {
  return static_cast<int>(std::min(size, static_cast<std::size_t>(std::numeric_limits<int>::max())));
}

// A negative time waits forever. The set of failed sockets is watched as well: a refused connection appears
// there and not among the writable ones.
int WaitFor(SocketHandle socket, bool for_writing, std::chrono::microseconds timeout) {
  fd_set ready;
  fd_set failed;
  FD_ZERO(&ready);
  FD_ZERO(&failed);
  FD_SET(Native(socket), &ready);
  FD_SET(Native(socket), &failed);
  timeval limit{};
  limit.tv_sec = static_cast<long>(timeout.count() / 1'000'000);
  limit.tv_usec = static_cast<long>(timeout.count() % 1'000'000);
  // The first argument is ignored on this system.
  const int count = select(0, for_writing ? nullptr : &ready, for_writing ? &ready : nullptr, &failed,
                           timeout.count() < 0 ? nullptr : &limit);
  return count > 0 ? 1 : count;
}

}  // namespace

bool StartUpSockets() {
  WSADATA data{};
  return WSAStartup(MAKEWORD(2, 2), &data) == 0;
}

void CleanUpSockets() {
  WSACleanup();
}

SocketHandle CreateTcpSocket() {
  return CreateSocket(SOCK_STREAM, IPPROTO_TCP);
}

SocketHandle CreateUdpSocket() {
  return CreateSocket(SOCK_DGRAM, IPPROTO_UDP);
}

void CloseSocket(SocketHandle socket) {
  closesocket(Native(socket));
}

void ShutdownSocket(SocketHandle socket) {
  shutdown(Native(socket), SD_BOTH);
  // The shutdown alone does not reliably wake a thread that is already blocked in a call.
  CancelIoEx(reinterpret_cast<HANDLE>(Native(socket)), nullptr);
}

bool BindPort(SocketHandle socket, std::uint16_t port) {
  const sockaddr_in address = MakeAddress(AnyAddress(), port);
  return bind(Native(socket), reinterpret_cast<const sockaddr*>(&address),
              static_cast<int>(sizeof(address))) == 0;
}

// This system delivers a group's datagrams also to sockets bound to a specific address.
bool BindDatagramPort(SocketHandle socket, const std::string& local_ip, std::uint16_t port,
                      const std::string& /*multicast_group*/) {
  const std::optional<in_addr> local = ParseLocalAddress(local_ip);
  if (!local) {
    WSASetLastError(WSAEINVAL);
    return false;
  }
  const sockaddr_in address = MakeAddress(*local, port);
  return bind(Native(socket), reinterpret_cast<const sockaddr*>(&address),
              static_cast<int>(sizeof(address))) == 0;
}

bool JoinMulticast(SocketHandle socket, const std::string& group, const std::string& local_ip) {
  const std::optional<in_addr> multicast = ParseAddress(group);
  const std::optional<in_addr> local = ParseLocalAddress(local_ip);
  if (!multicast || !local) {
    WSASetLastError(WSAEINVAL);
    return false;
  }
  ip_mreq membership{};
  membership.imr_multiaddr = *multicast;
  membership.imr_interface = *local;
  return SetOption(socket, IP_ADD_MEMBERSHIP, membership, IPPROTO_IP);
}

bool SetMulticastInterface(SocketHandle socket, const std::string& local_ip) {
  const std::optional<in_addr> local = ParseAddress(local_ip);
  if (!local) {
    WSASetLastError(WSAEINVAL);
    return false;
  }
  return SetOption(socket, IP_MULTICAST_IF, *local, IPPROTO_IP);
}

bool SetMulticastHops(SocketHandle socket, std::uint8_t hops) {
  return SetOption(socket, IP_MULTICAST_TTL, DWORD{hops}, IPPROTO_IP);
}

bool AllowAddressReuse(SocketHandle socket) {
  return SetOption(socket, SO_REUSEADDR, BOOL{TRUE});
}

std::uint16_t LocalPort(SocketHandle socket) {
  sockaddr_in local{};
  int size = static_cast<int>(sizeof(local));
  return getsockname(Native(socket), reinterpret_cast<sockaddr*>(&local), &size) == 0 ? ntohs(local.sin_port)
                                                                                      : std::uint16_t{0};
}

int ConnectSocket(SocketHandle socket, const std::string& ip, std::uint16_t port) {
  const std::optional<in_addr> parsed = ParseAddress(ip);
  if (!parsed) {
    WSASetLastError(WSAEINVAL);
    return -1;
  }
  const sockaddr_in address = MakeAddress(*parsed, port);
  return connect(Native(socket), reinterpret_cast<const sockaddr*>(&address),
                 static_cast<int>(sizeof(address))) == 0
             ? 0
             : -1;
}

int WaitWritable(SocketHandle socket, int timeout_ms) {
  return WaitFor(socket, true, std::chrono::milliseconds(timeout_ms));
}

int WaitReadable(SocketHandle socket, int timeout_ms) {
  return WaitFor(socket, false, std::chrono::milliseconds(timeout_ms));
}

int WaitReadableFor(SocketHandle socket, std::chrono::microseconds timeout) {
  if (timeout.count() < 0) {
    WSASetLastError(WSAEINVAL);
    return -1;
  }
  return WaitFor(socket, false, timeout);
}

int PendingSocketError(SocketHandle socket) {
  int error = 0;
  int size = static_cast<int>(sizeof(error));
  return getsockopt(Native(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) == 0
             ? error
             : WSAGetLastError();
}

bool SetNonBlocking(SocketHandle socket, bool non_blocking) {
  u_long mode = non_blocking ? 1 : 0;
  return ioctlsocket(Native(socket), static_cast<long>(FIONBIO), &mode) == 0;
}

bool SetSocketReceiveTimeout(SocketHandle socket, std::uint32_t milliseconds) {
  return SetOption(socket, SO_RCVTIMEO, DWORD{milliseconds});
}

bool SetSocketSendTimeout(SocketHandle socket, std::uint32_t milliseconds) {
  return SetOption(socket, SO_SNDTIMEO, DWORD{milliseconds});
}

std::optional<std::uint32_t> ReceiveBufferSize(SocketHandle socket) {
  int bytes = 0;
  int size = static_cast<int>(sizeof(bytes));
  if (getsockopt(Native(socket), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<char*>(&bytes), &size) != 0) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(bytes);
}

bool SetReceiveBufferSize(SocketHandle socket, std::uint32_t bytes) {
  return SetOption(socket, SO_RCVBUF, ClampToInt(bytes));
}

int SendBytes(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags) {
  return send(Native(socket), reinterpret_cast<const char*>(bytes.data()), ClampToInt(bytes.size()), flags);
}

int ReceiveBytes(SocketHandle socket, std::span<std::uint8_t> buffer, int flags) {
  return recv(Native(socket), reinterpret_cast<char*>(buffer.data()), ClampToInt(buffer.size()), flags);
}

int SendDatagram(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags, const Endpoint& to) {
  in_addr ip{};
  ip.s_addr = to.ip;
  const sockaddr_in address = MakeAddress(ip, to.port);
  return sendto(Native(socket), reinterpret_cast<const char*>(bytes.data()), ClampToInt(bytes.size()), flags,
                reinterpret_cast<const sockaddr*>(&address), static_cast<int>(sizeof(address)));
}

int ReceiveDatagram(SocketHandle socket, std::span<std::uint8_t> buffer, int flags, Endpoint& from) {
  sockaddr_in address{};
  int size = static_cast<int>(sizeof(address));
  int received = recvfrom(Native(socket), reinterpret_cast<char*>(buffer.data()), ClampToInt(buffer.size()),
                          flags, reinterpret_cast<sockaddr*>(&address), &size);
  // This system also fills the buffer, but reports a truncated datagram as a failure.
  if (received < 0 && WSAGetLastError() == WSAEMSGSIZE) {
    received = ClampToInt(buffer.size());
  }
  if (received >= 0) {
    from = {static_cast<std::uint32_t>(address.sin_addr.s_addr), ntohs(address.sin_port)};
  }
  return received;
}

int LastSocketError() {
  return WSAGetLastError();
}

bool IsWouldBlock(int socket_error) {
  return socket_error == WSAEWOULDBLOCK;
}

bool IsTimedOut(int socket_error) {
  return socket_error == WSAETIMEDOUT;
}

std::unique_ptr<TcpListener> TcpListener::Listen(const std::string& address, std::uint16_t port,
                                                 int backlog) {
  if (!StartUpSockets()) {
    return nullptr;
  }
  const std::optional<in_addr> parsed = ParseAddress(address);
  const SocketHandle socket = parsed ? CreateTcpSocket() : kInvalidSocket;
  if (socket == kInvalidSocket) {
    CleanUpSockets();
    return nullptr;
  }
  // Owns the socket from here on, so that every failure below closes it and cleans up the start-up.
  std::unique_ptr<TcpListener> listener(new TcpListener(socket, port));
  sockaddr_in local = MakeAddress(*parsed, port);
  int size = static_cast<int>(sizeof(local));
  // Here, address reuse would let a second program take over the port; this option prevents that.
  SetOption(socket, SO_EXCLUSIVEADDRUSE, BOOL{TRUE});
  if (bind(Native(socket), reinterpret_cast<const sockaddr*>(&local), static_cast<int>(sizeof(local))) != 0 ||
      listen(Native(socket), backlog) != 0 ||
      getsockname(Native(socket), reinterpret_cast<sockaddr*>(&local), &size) != 0) {
    return nullptr;
  }
  listener->port_ = ntohs(local.sin_port);
  return listener;
}

TcpListener::~TcpListener() {
  CloseSocket(socket_);
  CleanUpSockets();
}

SocketHandle TcpListener::Accept(int timeout_ms) {
  if (WaitReadable(socket_, timeout_ms) != 1) {
    return kInvalidSocket;
  }
  return static_cast<SocketHandle>(accept(Native(socket_), nullptr, nullptr));
}

}  // namespace quarn::platform
