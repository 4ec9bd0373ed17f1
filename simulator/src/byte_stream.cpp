#include "simulator/src/byte_stream.h"

namespace varkel::sim {

int PlainStream::Receive(std::span<std::uint8_t> buffer) {
  return quarn::platform::ReceiveBytes(socket_, buffer, 0);
}

bool PlainStream::SendAll(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const int sent = quarn::platform::SendBytes(socket_, bytes, 0);
    if (sent <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(sent));
  }
  return true;
}

}  // namespace varkel::sim
