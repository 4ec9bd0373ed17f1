#include "VarkelCore/src/upgrade/firmware_upgrade.h"

#include <chrono>
#include <exception>

#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

namespace {
/// Lets the exchange of a running refresh round end before the transfer takes the line.
constexpr std::chrono::milliseconds kSettleTime{300};
/// The sensor unpacks the package before it can restart.
constexpr std::chrono::seconds kUnpackTime{10};
}  // namespace

bool FirmwareUpgrade::Begin(std::size_t size) {
  if (upgrading_.exchange(true)) return false;
  progress_ = 0;
  total_ = static_cast<int>(size / kBlockSize);
  events_.upgrading_changed();
  return true;
}

void FirmwareUpgrade::End() {
  upgrading_ = false;
  events_.upgrading_changed();
}

void FirmwareUpgrade::SendOverNetwork(const std::stop_token& stop, quarn::lidar::KtcClient& client,
                                      const std::vector<std::uint8_t>& package, std::string command_text) {
  int result = -1;
  if (SleepUnlessStopped(stop, kSettleTime)) {
    try {
      result = client.TransferFileByCmdText(package, command_text, progress_);
    } catch (const std::exception& error) {
      report_.Log(error.what(), "ERROR");  // a table whose upgrade command is no number
    }
  }
  End();
  if (result != 0) {
    const std::string text = "Upgrade package transfer failed or is terminated.";
    report_.Error(text);
    report_.Log(text, "INFO");
    return;
  }
  report_.Success(
      "Upgrade package transmitted successfully. The lidar will automatically reboot within 10 seconds.");
  if (!SleepUnlessStopped(stop, kUnpackTime)) return;
  if (events_.restart() != 0) report_.Error("Auto reboot failed. Please reboot lidar manually.");
}

}  // namespace varkel
