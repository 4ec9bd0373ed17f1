#include "VarkelCore/src/upgrade/network_upgrade.h"

#include <chrono>
#include <exception>
#include <utility>

#include "VarkelCore/src/tasks/worker_threads.h"
#include "VarkelCore/src/upgrade/settle_time.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"

namespace varkel {

namespace {

int Transfer(quarn::lidar::KtcClient& client, std::span<const std::uint8_t> package,
             std::string& command_text, UserReport& report, std::atomic<std::uint32_t>& progress) {
  try {
    return client.TransferFileByCmdText(package, command_text, progress);
  } catch (const std::exception& error) {
    report.Log(error.what(), "ERROR");  // the table's upgrade command is not a number
    return -1;
  }
}

}  // namespace

void SendOverNetwork(const std::stop_token& stop, quarn::lidar::KtcClient& client,
                     std::span<const std::uint8_t> package, std::string command_text, UserReport& report,
                     const UpgradeRun& run, const std::function<int()>& restart) {
  UpgradeEnd end(run.end);
  const int result = SleepUnlessStopped(stop, kSettleTime)
                         ? Transfer(client, package, command_text, report, run.progress)
                         : -1;
  end.Now();
  if (result != 0) {
    const std::string text = "Upgrade package transfer failed or is terminated.";
    report.Error(text);
    report.Log(text, "INFO");
    return;
  }
  report.Success(
      "Upgrade package transmitted successfully. The lidar will automatically reboot within 10 seconds.");
  if (!SleepUnlessStopped(stop, std::chrono::milliseconds(quarn::lidar::Timeouts().unpack_ms))) return;
  if (restart() != 0) report.Error("Auto reboot failed. Please reboot lidar manually.");
}

}  // namespace varkel
