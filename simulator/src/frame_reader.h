#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "simulator/src/exchange_log.h"

namespace varkel::sim {

/// Splits a client's byte stream, received in pieces of any size, into requests of either frame version.
/// Bytes that do not begin a frame are skipped. Stores no more than the bytes that arrived.
class FrameReader {
 public:
  /// Longer than any request of the tool: upgrade pieces are about a kilobyte.
  static constexpr std::uint32_t kMaxPayload = 1024 * 1024;

  void Append(std::span<const std::uint8_t> bytes);

  /// The next complete request, or nullopt until more bytes arrive.
  std::optional<ReceivedRequest> Next();

  /// The header of a request that announced more than kMaxPayload. The reader returns nothing after it,
  /// because the announced end of that request can't be trusted.
  const std::optional<ReceivedRequest>& refused() const { return refused_; }

 private:
  std::vector<std::uint8_t> bytes_;
  std::optional<ReceivedRequest> refused_;
};

}  // namespace varkel::sim
