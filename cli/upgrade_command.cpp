#include "VarkelCore/src/upgrade/firmware_upgrade.h"

#include <QString>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

#include "VarkelCore/src/actions/sensor_restart.h"
#include "VarkelCore/src/catalogue/model_names.h"
#include "cli/commands.h"

namespace varkel::cli {

namespace {

constexpr std::chrono::milliseconds kCheckPeriod{100};
/// A sensor unpacks the package and restarts.
constexpr std::chrono::seconds kLongestReturn{120};

const VarInfo* UpgradeRow(const ConfigParser& catalogue) {
  for (const auto& [id, var] : catalogue.var_map()) {
    if (var->component_type == kUpgradeArea) return var.get();
  }
  return nullptr;
}

/// The upgrade mode of a small sensor; nullopt if there is no such mode.
std::optional<int> SmallMode(const std::string& mode) {
  if (mode.empty() || mode == "app") return 0;
  if (mode == "pbl") return 1;
  if (mode == "junction") return 2;
  return std::nullopt;
}

/// Starts one upgrade and waits for it.
class Upgrading {
 public:
  explicit Upgrading(const Job& job)
      : job_(job),
        connect_type_(ConnectTypeOf(job.link.target().model)),
        upgrade_(job.report, job.link.activity(), workers_, connect_type_,
                 {[this](const auto& session, const auto& catalogue) {
                    const int code = RestartSensor(*catalogue, *session, job_.report);
                    is_restarted_ = true;
                    return code;
                  },
                  [](const auto&) {}}) {}
  ~Upgrading() { workers_.StopAndJoin(); }
  Upgrading(const Upgrading&) = delete;
  Upgrading& operator=(const Upgrading&) = delete;

  /// False if it was not started.
  bool Start(int small_mode);
  /// Waits until the package has been transferred and a network sensor has been asked to restart.
  void Wait();

 private:
  bool is_finished() const {
    if (job_.link.activity().is_upgrading()) return false;
    if (!job_.report.error().empty()) return true;
    return job_.link.has_variables() ? is_restarted_.load() : !job_.report.success().empty();
  }

  const Job& job_;
  const std::atomic<int> connect_type_;
  std::atomic<bool> is_restarted_ = false;
  WorkerThreads workers_;
  FirmwareUpgrade upgrade_;
};

bool Upgrading::Start(int small_mode) {
  const auto& link = job_.link;
  const QString path = QString::fromStdString(job_.arguments.file);
  const auto catalogue = link.model()->catalogue;
  upgrade_.set_mode(small_mode);
  int code = 0;
  if (link.has_variables()) {
    code = upgrade_.StartFromRow(link.session(), catalogue, UpgradeRow(*catalogue), path);
  } else if (link.target().model == kMarvoKtc && small_mode == 0) {
    code = upgrade_.StartMarvo(link.session(), path);
  } else {
    code = upgrade_.StartSmallSensor(link.session(), catalogue, path);
  }
  return code == 0 && (upgrade_.total() > 1 || job_.link.activity().is_upgrading() || is_finished());
}

void Upgrading::Wait() {
  while (!is_finished() && SleepUnlessStopped(job_.stop, kCheckPeriod)) {
    if (!job_.progress || upgrade_.total() <= 0) continue;
    job_.progress(static_cast<std::size_t>(upgrade_.progress()), static_cast<std::size_t>(upgrade_.total()));
  }
}

/// Waits until the sensor answers again; returns what it then reports.
SensorResult AwaitReturn(const Job& job) {
  const auto end = std::chrono::steady_clock::now() + kLongestReturn;
  while (std::chrono::steady_clock::now() < end && SleepUnlessStopped(job.stop, kCheckPeriod)) {
    RecordingReport report;
    auto link = SensorLink::Open(job.link.target(), job.table_folder, report, job.stop);
    if (link) {
      return Info(
          {job.arguments, job.table_folder, **link, report, job.stop, job.console, job.is_alone, {}, {}});
    }
  }
  return Sentence(job.link.target(), kNoConnection,
                  "The package was transferred, but the sensor did not come back.");
}

}  // namespace

SensorResult Upgrade(const Job& job) {
  const std::string& mode = job.arguments.mode;
  const bool is_network = job.link.has_variables();
  const auto small_mode = SmallMode(mode);
  if (is_network ? !mode.empty() && mode != "lidar" : !small_mode) {
    return ModelLacks(job, "upgrade mode \"" + mode + "\"");
  }
  Upgrading upgrading(job);
  const bool is_started = upgrading.Start(small_mode.value_or(0));
  if (is_started) upgrading.Wait();
  if (job.stop.stop_requested()) {
    return Sentence(job.link.target(), kFailed, "Stopped while the package was being sent.");
  }
  if (!is_started || !job.report.error().empty()) {
    const std::string fault = job.report.error();
    return Sentence(job.link.target(), kFailed,
                    fault.empty() ? "The package " + job.arguments.file + " can't be used." : fault);
  }
  if (!is_network || job.arguments.no_wait) return Sentence(job.link.target(), kDone, job.report.success());
  return AwaitReturn(job);
}

}  // namespace varkel::cli
