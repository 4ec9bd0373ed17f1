#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>
#include <string>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/upgrade/upgrade_run.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Sends a package over KTC with the command that the table names (hexadecimal text), then restarts the
/// sensor 10 seconds after the success. On a worker's thread, after the run was claimed; every outcome is
/// reported. `restart` restarts the sensor that took the package: 0 on success. A stop ends a pause
/// immediately and reports nothing.
void SendOverNetwork(const std::stop_token& stop, quarn::lidar::KtcClient& client,
                     std::span<const std::uint8_t> package, std::string command_text, UserReport& report,
                     const UpgradeRun& run, const std::function<int()>& restart);

}  // namespace varkel
