#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>
#include <utility>

#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/Source/src/serial_exchange.h"

namespace varkel {

/// One claimed upgrade, as its worker sees it.
struct UpgradeRun {
  std::atomic<std::uint32_t>& progress;  ///< blocks that are through
  std::atomic<int>& total;               ///< blocks in all
  std::function<void()> end;             ///< lowers and announces "is upgrading"
  std::function<void()> disconnect;      ///< asks the controller to disconnect
};

/// Ends a run once: where the worker says so, ahead of its final message, or at the latest when it leaves.
class UpgradeEnd {
 public:
  explicit UpgradeEnd(std::function<void()> end) : end_(std::move(end)) {}
  ~UpgradeEnd() { Now(); }
  UpgradeEnd(const UpgradeEnd&) = delete;
  UpgradeEnd& operator=(const UpgradeEnd&) = delete;
  void Now() {
    if (const auto end = std::exchange(end_, {})) end();
  }

 private:
  std::function<void()> end_;
};

/// Sends a package frame by frame over a serial exchange and disconnects afterwards. On a worker's thread;
/// every outcome is reported. `mode`: 0 application and FPGA, 1 PBL. A stop ends it as soon as the connection
/// is interrupted.
void SendOverSerial(const std::stop_token& stop, quarn::lidar::SerialExchange& exchange,
                    std::span<const std::uint8_t> package, int mode, UserReport& report,
                    const UpgradeRun& run);

}  // namespace varkel
