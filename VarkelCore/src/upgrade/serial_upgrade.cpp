#include "VarkelCore/src/upgrade/serial_upgrade.h"

#include <chrono>
#include <string>

#include "VarkelCore/src/tasks/worker_threads.h"
#include "libquarn/Source/src/ota_transfer.h"

namespace varkel {

namespace {
/// Lets the exchange of a running information round end before the transfer takes the line.
constexpr std::chrono::milliseconds kSettleTime{300};
}  // namespace

void SendOverSerial(const std::stop_token& stop, quarn::lidar::SerialExchange& exchange,
                    std::span<const std::uint8_t> package, int mode, UserReport& report,
                    const UpgradeRun& run) {
  UpgradeEnd end(run.end);
  int result = quarn::lidar::SerialExchange::kNotSent;
  if (SleepUnlessStopped(stop, kSettleTime)) {
    result = SendOtaPackage(exchange, package, static_cast<std::uint32_t>(mode), run.progress);
  }
  end.Now();
  if (result == 0) {
    report.Success("Upgrade package transmitted successfully. The lidar will automatically reboot.");
  } else {
    const std::string text =
        "Upgrade package transfer failed or is terminated. error:" + std::to_string(result);
    report.Error(text);
    report.Log(text, "INFO");
  }
  run.disconnect();
}

}  // namespace varkel
