#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/upgrade/serial_upgrade.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Sends firmware to a sensor. Thread-safe; one upgrade at a time.
class FirmwareUpgrade {
 public:
  /// The package counts as transferred in blocks of this many bytes.
  static constexpr std::size_t kBlockSize = 1024;

  struct Events {
    std::function<void()> upgrading_changed;
    std::function<int()> restart;      ///< restarts the sensor; 0 on success
    std::function<void()> disconnect;  ///< asks the controller to disconnect
  };

  FirmwareUpgrade(UserReport& report, Events events) : report_(report), events_(std::move(events)) {}

  bool is_upgrading() const { return upgrading_; }
  int progress() const { return static_cast<int>(progress_.load()); }  ///< blocks under way or done
  int total() const { return total_; }  ///< blocks in all; 1 before the first upgrade

  /// Claims the upgrade for a package of `size` bytes; false when one runs already.
  bool Begin(std::size_t size);

  /// The claimed upgrade for a worker that sends it another way than over the network.
  UpgradeRun Run() {
    return {progress_, total_, [this] { End(); }, events_.disconnect};
  }

  /// Sends the package with the command that the table names, then restarts the sensor 10 seconds after the
  /// success. On a worker's thread, after Begin. Every outcome is reported.
  void SendOverNetwork(const std::stop_token& stop, quarn::lidar::KtcClient& client,
                       const std::vector<std::uint8_t>& package, std::string command_text);

 private:
  void End();

  UserReport& report_;
  const Events events_;
  std::atomic<bool> upgrading_ = false;
  std::atomic<std::uint32_t> progress_ = 0;
  std::atomic<int> total_ = 1;
};

}  // namespace varkel
