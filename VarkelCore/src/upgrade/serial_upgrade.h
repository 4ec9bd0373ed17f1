#pragma once

#include <cstdint>
#include <span>
#include <stop_token>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/upgrade/upgrade_run.h"
#include "libquarn/Source/src/serial_exchange.h"

namespace varkel {

/// Sends a package frame by frame over a serial exchange and then disconnects. Runs on a worker thread; every
/// outcome is reported. `mode`: 0 application and FPGA, 1 PBL. A stop takes effect when the session ends.
void SendOverSerial(const std::stop_token& stop, quarn::lidar::SerialExchange& exchange,
                    std::span<const std::uint8_t> package, int mode, UserReport& report,
                    const UpgradeRun& run);

}  // namespace varkel
