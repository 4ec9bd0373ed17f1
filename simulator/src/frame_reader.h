#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "simulator/src/exchange_log.h"

namespace varkel::sim {

/// Cuts a client's byte stream, in whatever pieces it comes, into requests of either frame version. Bytes
/// that start no frame are skipped. Holds no more than what really came.
class FrameReader {
 public:
  /// No request of this tool is longer: upgrade pieces are about a kilobyte.
  static constexpr std::uint32_t kMaxPayload = 1024 * 1024;

  void Append(std::span<const std::uint8_t> bytes);

  /// The next complete request, or nothing until more bytes come.
  std::optional<ReceivedRequest> Next();

  /// The header of a request that announced more than kMaxPayload. The reader yields nothing after it:
  /// where that request ends can't be trusted.
  const std::optional<ReceivedRequest>& refused() const { return refused_; }

 private:
  std::vector<std::uint8_t> bytes_;
  std::optional<ReceivedRequest> refused_;
};

}  // namespace varkel::sim
