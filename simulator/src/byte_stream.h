#pragma once

#include <cstdint>
#include <span>

#include "libquarn/Platform/src/socket.h"

namespace varkel::sim {

/// The bytes of one conversation, whatever carries them. One thread uses it. The socket stays its owner's and
/// outlives the stream; shutting it down ends a call that blocks.
class ByteStream {
 public:
  virtual ~ByteStream() = default;

  /// What has come, at most the buffer's size; waits for the first byte. 0 or less: nothing more comes.
  virtual int Receive(std::span<std::uint8_t> buffer) = 0;
  /// False when the client is gone.
  virtual bool SendAll(std::span<const std::uint8_t> bytes) = 0;
  /// Tells the client that the conversation ends intentionally, if the transport has a message for that. A
  /// stream that goes without has been cut.
  virtual void End() {}
};

/// The bytes as they are, over TCP.
class PlainStream : public ByteStream {
 public:
  explicit PlainStream(quarn::platform::SocketHandle socket) : socket_(socket) {}

  int Receive(std::span<std::uint8_t> buffer) override;
  bool SendAll(std::span<const std::uint8_t> bytes) override;

 private:
  const quarn::platform::SocketHandle socket_;
};

}  // namespace varkel::sim
