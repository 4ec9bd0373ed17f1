#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/socket.h"

/// The protocol between line_host and a test, with one connection per line: a block is its size (u16,
/// big-endian) and that many bytes. The host begins with the port's name; then each request is answered with
/// one block.
namespace quarn::test {

enum LineRequest : std::uint8_t {
  kWriteLine = 'w',  ///< bytes for the client of the port; answered with one byte, 1 if all were sent
  kReadLine =
      'r',  ///< a size (u16); answered with up to that many of the client's bytes, none after a short wait
  kLineRate = 'b',  ///< answered with the rate (u32) that its client has set
  kPullLine = 'p',  ///< answered with an empty block once the line is gone and its name is free
};

inline bool SendBlock(platform::SocketHandle socket, std::span<const std::uint8_t> bytes) {
  std::vector<std::uint8_t> block(2 + bytes.size());
  lidar::StoreBigEndian(std::span(block), 0, static_cast<std::uint16_t>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), block.begin() + 2);
  return platform::SendBytes(socket, block, 0) == static_cast<int>(block.size());
}

inline bool ReceiveAll(platform::SocketHandle socket, std::span<std::uint8_t> buffer) {
  while (!buffer.empty()) {
    const int count = platform::ReceiveBytes(socket, buffer, 0);
    if (count <= 0) return false;
    buffer = buffer.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

/// nullopt if the other side has gone.
inline std::optional<std::vector<std::uint8_t>> ReceiveBlock(platform::SocketHandle socket) {
  std::array<std::uint8_t, 2> size{};
  if (!ReceiveAll(socket, size)) return std::nullopt;
  std::vector<std::uint8_t> block(lidar::LoadBigEndian<std::uint16_t>(size, 0));
  return ReceiveAll(socket, block) ? std::optional(block) : std::nullopt;
}

}  // namespace quarn::test
