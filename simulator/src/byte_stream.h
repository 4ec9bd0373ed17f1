#pragma once

#include <cstdint>
#include <span>

#include "libquarn/Platform/src/socket.h"

namespace varkel::sim {

/// The bytes of one conversation over any transport, used by one thread. The socket is not owned and must
/// outlive the stream; shutting it down ends a blocking call.
class ByteStream {
 public:
  virtual ~ByteStream() = default;

  /// Reads at most the buffer's size; waits for the first byte. 0 or less: the stream has ended.
  virtual int Receive(std::span<std::uint8_t> buffer) = 0;
  /// False when the client is gone.
  virtual bool SendAll(std::span<const std::uint8_t> bytes) = 0;
  /// Tells the client that the conversation ends intentionally, if the transport has a message for that.
  /// Without it the client sees a broken connection.
  virtual void End() {}
};

/// Unencrypted bytes over TCP.
class PlainStream : public ByteStream {
 public:
  explicit PlainStream(quarn::platform::SocketHandle socket) : socket_(socket) {}

  int Receive(std::span<std::uint8_t> buffer) override;
  bool SendAll(std::span<const std::uint8_t> bytes) override;

 private:
  const quarn::platform::SocketHandle socket_;
};

}  // namespace varkel::sim
