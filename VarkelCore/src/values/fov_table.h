#pragma once

#include <array>
#include <cstddef>
#include <mutex>

namespace varkel {

/// The set command that carries the start angles.
inline constexpr char kFovSetCommand[] = "0x22";

/// The sensor's field of view: five sectors in degrees, five start angles and then five end angles.
/// Thread-safe.
class FovTable {
 public:
  static constexpr std::size_t kSectors = 5;
  using Angles = std::array<float, 2 * kSectors>;

  Angles Get() const {
    const std::lock_guard lock(mutex_);
    return angles_;
  }
  /// `index` is below 10.
  void Set(std::size_t index, float degrees) {
    const std::lock_guard lock(mutex_);
    angles_.at(index) = degrees;
  }
  void SetSectors(const std::array<float, kSectors>& starts, const std::array<float, kSectors>& ends) {
    const std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < kSectors; ++i) {
      angles_.at(i) = starts.at(i);
      angles_.at(kSectors + i) = ends.at(i);
    }
  }
  /// After a disconnect the first four start angles read 0 again.
  void ResetOnDisconnect() {
    const std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < 4; ++i) angles_.at(i) = 0.0F;
  }

 private:
  mutable std::mutex mutex_;
  Angles angles_ = {0, 0, 0, 0, 0, 360, 360, 360, 360, 360};
};

}  // namespace varkel
