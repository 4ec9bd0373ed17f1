#pragma once

#include <cstdint>
#include <string>

namespace quarn::lidar {

/// A byte stream to a sensor. Failures are return values (false, or negative), never exceptions, and a failed
/// open leaves the transport closed.
///
/// A transport has no lock of its own: its owner serialises all operations except `IsOpened` and `Interrupt`,
/// which any thread may call at any time. Time-outs are in milliseconds unless named otherwise.
class ClientBase {
 public:
  virtual ~ClientBase();
  ClientBase(const ClientBase&) = delete;
  ClientBase& operator=(const ClientBase&) = delete;

  /// Connects, with the system's own time-out. The three paths are PEM files for encrypted transports (null:
  /// none), which stay the caller's until the next open.
  virtual bool Open(const std::string& ip, std::uint16_t port, bool auto_receive, const char* cert,
                    const char* private_key, const char* ca) = 0;

  /// Connects within `timeout_s` seconds, from `local_port` unless that is 0 or in use.
  virtual bool TryOpen(std::uint16_t local_port, const std::string& ip, std::uint16_t port, bool auto_receive,
                       const char* cert, const char* private_key, const char* ca,
                       std::uint32_t timeout_s) = 0;

  virtual void Close() = 0;
  virtual bool IsOpened() const = 0;

  /// A single send call: the number of bytes sent, or -1.
  virtual int Send(const std::uint8_t* data, std::uint16_t length, int flags) = 0;

  /// A single receive call of at most `length` bytes: the number received, 0 at the end of the stream, or -1.
  virtual int Receive(std::uint8_t* buffer, std::uint32_t length, int flags) = 0;

  virtual bool SetReceiveTimeout(std::uint32_t receive_ms) = 0;
  /// 0 on success. A time of 0 waits forever.
  virtual int SetTimeout(std::uint32_t receive_ms, std::uint32_t send_ms) = 0;
  /// Enlarges the system's receive buffer to `size` bytes; never shrinks it.
  virtual void SetReceiveBufferSize(const std::uint32_t& size) = 0;

  /// Shuts the transport down for good: a running or later open, send or receive fails at once. Callable from
  /// any thread at any time.
  virtual void Interrupt() = 0;

 protected:
  ClientBase() = default;
};

}  // namespace quarn::lidar
