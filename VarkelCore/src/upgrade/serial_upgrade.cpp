#include "VarkelCore/src/upgrade/serial_upgrade.h"

#include <string>

#include "VarkelCore/src/tasks/worker_threads.h"
#include "VarkelCore/src/upgrade/settle_time.h"
#include "libquarn/Source/src/ota_transfer.h"

namespace varkel {

void SendOverSerial(const std::stop_token& stop, quarn::lidar::SerialExchange& exchange,
                    std::span<const std::uint8_t> package, int mode, UserReport& report,
                    const UpgradeRun& run) {
  UpgradeEnd end(run.end);
  quarn::lidar::Exchanged<void> result = tl::unexpected(quarn::lidar::SerialExchange::kNotSent);
  if (SleepUnlessStopped(stop, kSettleTime)) {
    result = SendOtaPackage(exchange, package, static_cast<std::uint32_t>(mode), run.progress);
  }
  end.Now();
  if (result) {
    report.Success("Upgrade package transmitted successfully. The lidar will automatically reboot.");
  } else {
    const std::string text =
        "Upgrade package transfer failed or is terminated. error:" + std::to_string(result.error());
    report.Error(text);
    report.Log(text, "INFO");
  }
  run.disconnect();
}

}  // namespace varkel
