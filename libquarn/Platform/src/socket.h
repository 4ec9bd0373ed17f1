#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

/// The operating system's sockets (socket_posix.cpp, socket_windows.cpp). Nothing else in the project
/// includes a socket header. No operation throws.
namespace quarn::platform {

using SocketHandle = std::intptr_t;
inline constexpr SocketHandle kInvalidSocket = -1;

/// An IPv4 address in network order and a port in host order.
struct Endpoint {
  std::uint32_t ip = 0;
  std::uint16_t port = 0;
};

/// Each call needs a matching CleanUpSockets. Reference-counted on Windows, does nothing elsewhere.
bool StartUpSockets();
void CleanUpSockets();

/// An IPv4 TCP socket, or kInvalidSocket. Close-on-exec; a broken connection never raises a signal.
SocketHandle CreateTcpSocket();
/// An IPv4 datagram socket, or kInvalidSocket. Close-on-exec.
SocketHandle CreateUdpSocket();
void CloseSocket(SocketHandle socket);

/// Shuts down both directions; a thread blocked in ReceiveBytes or SendBytes on the socket returns.
void ShutdownSocket(SocketHandle socket);

/// Binds to a port on all local addresses.
bool BindPort(SocketHandle socket, std::uint16_t port);
/// Binds a datagram socket to a port of `local_ip` (empty: any address), such that it also receives datagrams
/// to `multicast_group` (empty: none) once JoinMulticast has joined that.
bool BindDatagramPort(SocketHandle socket, const std::string& local_ip, std::uint16_t port,
                      const std::string& multicast_group);
/// Joins a group on the interface of `local_ip` (empty: the system's choice).
bool JoinMulticast(SocketHandle socket, const std::string& group, const std::string& local_ip);
/// Sends multicast datagrams from the interface of `local_ip`, which must not be empty.
bool SetMulticastInterface(SocketHandle socket, const std::string& local_ip);
/// How far multicast datagrams go: 0 stays on this machine, 1 on the local network, each further 1 passes one
/// more router.
bool SetMulticastHops(SocketHandle socket, std::uint8_t hops);
/// Allows several sockets to bind to one port; call it before binding.
bool AllowAddressReuse(SocketHandle socket);
/// The port that the socket is bound to, 0 if there is none.
std::uint16_t LocalPort(SocketHandle socket);

/// Starts connecting to an IPv4 address: 0, or -1 with the reason in LastSocketError.
int ConnectSocket(SocketHandle socket, const std::string& ip, std::uint16_t port);

/// Waits until the socket is writable (or has failed: see PendingSocketError). 1: writable, 0: time-out, -1:
/// error. A negative time waits forever, here and in WaitReadable.
int WaitWritable(SocketHandle socket, int timeout_ms);
/// Waits until the socket is readable (or a listener has a connection). 1: readable, 0: time-out, -1: error.
int WaitReadable(SocketHandle socket, int timeout_ms);
/// The same with finer resolution; a negative time is an error (-1).
int WaitReadableFor(SocketHandle socket, std::chrono::microseconds timeout);

/// The socket's pending error (SO_ERROR), 0 if there is none.
int PendingSocketError(SocketHandle socket);

bool SetNonBlocking(SocketHandle socket, bool non_blocking);
bool SetSocketReceiveTimeout(SocketHandle socket, std::uint32_t milliseconds);
bool SetSocketSendTimeout(SocketHandle socket, std::uint32_t milliseconds);
/// The size of the receive buffer in bytes; nullopt if unknown.
std::optional<std::uint32_t> ReceiveBufferSize(SocketHandle socket);
bool SetReceiveBufferSize(SocketHandle socket, std::uint32_t bytes);

/// One send or receive call: bytes moved, 0 at the end of the stream, -1 on failure.
int SendBytes(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags);
int ReceiveBytes(SocketHandle socket, std::span<std::uint8_t> buffer, int flags);
/// Sends or receives one datagram: its size in bytes, -1 on failure. Bytes that do not fit into the buffer
/// are lost.
int SendDatagram(SocketHandle socket, std::span<const std::uint8_t> bytes, int flags, const Endpoint& to);
int ReceiveDatagram(SocketHandle socket, std::span<std::uint8_t> buffer, int flags, Endpoint& from);

/// Error of the calling thread's last failed socket call (errno; WSAGetLastError on Windows).
int LastSocketError();
bool IsWouldBlock(int socket_error);  ///< also a connection that is under way
bool IsTimedOut(int socket_error);

/// A listening TCP socket, closed on destruction.
class TcpListener {
 public:
  /// Listens on `address`:`port`; port 0 picks a free one. Null on failure. `backlog` is the number of
  /// connections that may wait for Accept.
  static std::unique_ptr<TcpListener> Listen(const std::string& address, std::uint16_t port,
                                             int backlog = 64);
  ~TcpListener();
  TcpListener(const TcpListener&) = delete;
  TcpListener& operator=(const TcpListener&) = delete;

  std::uint16_t port() const { return port_; }
  /// A connected socket, which the caller closes; kInvalidSocket if none came within the time.
  SocketHandle Accept(int timeout_ms);

 private:
  TcpListener(SocketHandle socket, std::uint16_t port) : socket_(socket), port_(port) {}
  SocketHandle socket_;
  std::uint16_t port_;
};

}  // namespace quarn::platform
