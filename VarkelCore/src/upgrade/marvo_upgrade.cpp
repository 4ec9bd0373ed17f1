#include "VarkelCore/src/upgrade/marvo_upgrade.h"

#include <algorithm>
#include <memory>

#include "VarkelCore/src/tasks/worker_threads.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/ota_transfer.h"

namespace varkel {

namespace {

using quarn::lidar::OtaBlocks;
using quarn::lidar::Partition;

constexpr std::uint32_t kCommandBaudRate = 5000000;
constexpr std::uint32_t kUpgradeBaudRate = 9600;
constexpr std::uint8_t kUpgradeMode = 4;

constexpr char kInfo[] = "INFO";

}  // namespace

void MarvoUpgrade::Run(const std::stop_token& stop, SmallSensorChannel& channel,
                       std::span<const std::uint8_t> package, const UpgradeRun& run) const {
  UpgradeEnd end(run.end);
  if (!SleepUnlessStopped(stop, pauses_.settle)) return;
  const std::optional<OtaPackageHeader> header = Parse(package);
  if (!header) {
    Fail(end, "Invalid Marvo OTA upgrade package");
    return;
  }
  // The flags follow "0x" in decimal, so that these lines can be compared with older logs.
  report_.Log("Marvo OTA package parsed: flags=0x" + std::to_string(header->flags) +
                  ", total_size=" + std::to_string(header->total_size),
              kInfo);
  const std::optional<Partition> running = Prepare(stop, channel, end);
  if (!running) return;
  const std::vector<OtaComponent> components = ComponentsToSend(*header, *running);
  std::size_t blocks = 0;
  for (const OtaComponent& component : components) blocks += OtaBlocks(Extract(package, component).size());
  run.total = static_cast<int>(blocks);
  run.progress = 0;
  const bool sent = std::all_of(components.begin(), components.end(), [&](const OtaComponent& component) {
    return Send(channel, package, component, run, end);
  });
  if (!sent) return;
  end.Now();
  report_.Success("Marvo upgrade completed. The lidar will automatically reboot.");
  run.disconnect();
}

std::optional<OtaPackageHeader> MarvoUpgrade::Parse(std::span<const std::uint8_t> package) const {
  OtaPackageHeader header;
  const MarvoPackageFault fault = ParseMarvoPackage(package, header);
  if (fault == MarvoPackageFault::kWrongMagic) report_.Log("Invalid OTA package magic", kInfo);
  return fault == MarvoPackageFault::kNone ? std::optional(header) : std::nullopt;
}

std::optional<Partition> MarvoUpgrade::Prepare(const std::stop_token& stop, SmallSensorChannel& channel,
                                               UpgradeEnd& end) const {
  if (!SetBaudRate(channel, kCommandBaudRate)) {
    Fail(end, "Marvo upgrade: set baudrate failed");
    return std::nullopt;
  }
  const auto running = ChangeMode(*channel.ktc_exchange(), kUpgradeMode);
  if (!running) {
    Fail(end, "Marvo upgrade: change mode failed");
    return std::nullopt;
  }
  report_.Log(std::string("Marvo upgrade: current partition=") + (*running == Partition::kA ? "A" : "B"),
              kInfo);
  if (!SleepUnlessStopped(stop, pauses_.mode_change)) return std::nullopt;
  if (!SetBaudRate(channel, kUpgradeBaudRate)) {
    Fail(end, "Marvo upgrade: set upgrade baudrate failed");
    return std::nullopt;
  }
  return *running;
}

bool MarvoUpgrade::SetBaudRate(SmallSensorChannel& channel, std::uint32_t baud_rate) {
  return channel
      .QueryKtc(quarn::lidar::kKtcExtensionCmd, quarn::lidar::SetBaudRatePayload(baud_rate),
                SmallSensorChannel::Logged::kYes)
      .has_value();
}

bool MarvoUpgrade::Send(SmallSensorChannel& channel, std::span<const std::uint8_t> package,
                        const OtaComponent& component, const UpgradeRun& run, UpgradeEnd& end) const {
  const std::span<const std::uint8_t> data = Extract(package, component);
  if (data.empty()) {
    Fail(end, "Marvo upgrade: failed to extract " + component.name);
    return false;
  }
  report_.Log("Marvo upgrade: sending " + component.name + " (type=0x0" + std::to_string(component.type) +
                  ", size=" + std::to_string(data.size()) + ")",
              kInfo);
  const auto result = SendOtaComponent(*channel.ktc_exchange(), data, component.type, run.progress);
  if (!result) {
    const std::string text =
        "Marvo upgrade: " + component.name + " failed, error=" + std::to_string(result.error());
    Fail(end, text);
    report_.Log(text, kInfo);
    return false;
  }
  report_.Log("Marvo upgrade: " + component.name + " completed", kInfo);
  return true;
}

std::span<const std::uint8_t> MarvoUpgrade::Extract(std::span<const std::uint8_t> package,
                                                    const OtaComponent& component) const {
  const ExtractedComponent extracted = ExtractComponent(package, component);
  if (extracted.out_of_range) report_.Log("Component " + component.name + " data out of range", kInfo);
  return extracted.data;
}

void MarvoUpgrade::Fail(UpgradeEnd& end, const std::string& text) const {
  end.Now();
  report_.Error(text);
}

}  // namespace varkel
