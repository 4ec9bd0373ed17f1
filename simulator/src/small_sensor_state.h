#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "libquarn/Source/src/ota_transfer.h"

namespace varkel::sim {

/// Indices of the version item.
enum SmallSensorVersion : std::uint8_t { kBmbFpga = 0, kTmbFpga = 1, kBmbMcu = 2, kPbl = 5 };

/// A small sensor's state besides its table's variables.
struct SmallSensorItems {
  bool standby = false;
  std::uint8_t spin_rate = 10;
  bool last_return = false;           ///< otherwise the strongest
  std::uint32_t baud_rate = 3000000;  ///< of the line on the sensor's side
  std::uint8_t angular_range = 0;     ///< codes of the IMU range
  std::uint8_t accel_range = 0;
  std::uint8_t safety_state = 0;             ///< 0 normal, 1 warning, 2 shutdown
  std::vector<std::uint16_t> fault_codes{};  ///< at most 126, for the same reason as the correction
  std::string serial_number = "ZE1A2407B0031";
  std::map<std::uint8_t, std::string> versions = {
      {kBmbFpga, "1.4.2.0"}, {kTmbFpga, "1.1.7.3"}, {kBmbMcu, "2.0.6.0"}, {kPbl, "1.0.3.0"}};
  std::vector<std::uint8_t> correction = std::vector<std::uint8_t>(192, 0x5A);  ///< at most kMostCorrection
  quarn::lidar::Partition partition = quarn::lidar::Partition::kA;              ///< the one it runs from
  bool ready_for_firmware = false;                                              ///< accepts components

  static constexpr std::size_t kMostCorrection = 251;  ///< the most that fits a reply's length byte
};

/// SmallSensorItems guarded by a lock. Thread-safe.
class SmallSensorState {
 public:
  SmallSensorItems Items() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return items_;
  }

  /// `change` runs with the lock held.
  void Change(const std::function<void(SmallSensorItems&)>& change) {
    const std::lock_guard<std::mutex> lock(mutex_);
    change(items_);
  }

 private:
  mutable std::mutex mutex_;
  SmallSensorItems items_;  // guarded by mutex_
};

}  // namespace varkel::sim
