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

/// Sends the components of a Marvo package to the sensor. One object can be used for several runs in turn.
class MarvoUpgrade {
 public:
  /// Time that the sensor needs after a change of mode.
  static constexpr std::chrono::milliseconds kModeChangeTime{3000};

  struct Pauses {
    std::chrono::milliseconds settle = kSettleTime;
    std::chrono::milliseconds mode_change = kModeChangeTime;
  };

  explicit MarvoUpgrade(UserReport& report) : MarvoUpgrade(report, Pauses()) {}
  MarvoUpgrade(UserReport& report, Pauses pauses) : report_(report), pauses_(pauses) {}

  /// Called on a worker thread, after the run was claimed. Every outcome is reported; a failed step does not
  /// undo the steps before it. A stop ends a pause immediately and reports nothing.
  void Run(const std::stop_token& stop, SmallSensorChannel& channel, std::span<const std::uint8_t> package,
           const UpgradeRun& run) const;

 private:
  std::optional<OtaPackageHeader> Parse(std::span<const std::uint8_t> package) const;
  /// Prepares the sensor for writing: the partition that it runs from; nullopt if that failed or was stopped.
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
