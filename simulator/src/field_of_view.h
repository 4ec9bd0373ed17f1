#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace varkel::sim {

/// The angles of the five channels. Angles are big-endian u16 in tenths of a degree. Thread-safe.
class FieldOfView {
 public:
  static constexpr std::size_t kChannels = 5;
  /// A write: the channel byte, then five start angles.
  static constexpr std::size_t kWriteSize = 1 + 2 * kChannels;
  static constexpr std::uint16_t kFullCircle = 3600;

  /// The answer to a read: the count byte (at most five), then that many pairs of start and end.
  std::vector<std::uint8_t> Reply(std::uint8_t count) const;

  /// True if a write's payload has the right size, channel and angles.
  static bool IsValid(std::span<const std::uint8_t> payload);
  /// Stores the start angles of a valid write.
  void Store(std::span<const std::uint8_t> payload);
  /// The factory state: every start angle is 0.
  void Reset();

 private:
  mutable std::mutex mutex_;
  std::array<std::uint16_t, kChannels> starts_{};  // guarded by mutex_; end angles stay at 360 degrees
};

}  // namespace varkel::sim
