#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/upgrade/marvo_package.h"
#include "VarkelCore/src/upgrade/settle_time.h"
#include "VarkelCore/src/upgrade/upgrade_run.h"

namespace varkel {

/// Sends the components of a Marvo package to the sensor. One object serves one run after the other.
class MarvoUpgrade {
 public:
  /// How long the sensor takes to be ready after its mode was changed.
  static constexpr std::chrono::milliseconds kModeChangeTime{3000};

  struct Pauses {
    std::chrono::milliseconds settle = kSettleTime;
    std::chrono::milliseconds mode_change = kModeChangeTime;
  };

  explicit MarvoUpgrade(UserReport& report) : MarvoUpgrade(report, Pauses()) {}
  MarvoUpgrade(UserReport& report, Pauses pauses) : report_(report), pauses_(pauses) {}

  /// On a worker's thread, after the run was claimed. Every outcome is reported; a failed step leaves the
  /// sensor as the steps before it set it. A stop ends a pause at once and leaves without a word.
  void Run(const std::stop_token& stop, SmallSensorChannel& channel, std::span<const std::uint8_t> package,
           const UpgradeRun& run) const;

 private:
  std::optional<OtaPackageHeader> Parse(std::span<const std::uint8_t> package) const;
  /// The partition that the sensor runs from, when it is ready to be written to.
  std::optional<quarn::lidar::Partition> Prepare(const std::stop_token& stop, SmallSensorChannel& channel,
                                                 UpgradeEnd& end) const;
  static bool SetBaudRate(SmallSensorChannel& channel, std::uint32_t baud_rate);
  bool Send(SmallSensorChannel& channel, std::span<const std::uint8_t> package, const OtaComponent& component,
            const UpgradeRun& run, UpgradeEnd& end) const;
  std::span<const std::uint8_t> Extract(std::span<const std::uint8_t> package,
                                        const OtaComponent& component) const;
  void Fail(UpgradeEnd& end, const std::string& text) const;

  UserReport& report_;
  const Pauses pauses_;
};

}  // namespace varkel
