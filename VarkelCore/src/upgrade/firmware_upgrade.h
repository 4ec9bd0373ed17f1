#pragma once

#include <QString>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "VarkelCore/src/upgrade/marvo_upgrade.h"
#include "VarkelCore/src/upgrade/package_file.h"
#include "VarkelCore/src/upgrade/upgrade_run.h"

namespace varkel {

/// Starts firmware upgrades: checks the preconditions, claims the only upgrade that may run, and sends the
/// package on a worker to the session that existed at the start, whatever is connected later. Called from one
/// thread; progress may be read from any.
class FirmwareUpgrade {
 public:
  using Session = std::shared_ptr<SensorSession>;
  using Catalogue = std::shared_ptr<const ConfigParser>;

  /// What an upgrade does with the session after the transfer. Called on a worker.
  struct Host {
    /// Restarts the sensor with the table's command and disconnects it: 0 on success.
    std::function<int(const Session&, const Catalogue&)> restart;
    /// Disconnects the session, unless it has already ended.
    std::function<void(const Session&)> disconnect;
  };

  /// `connect_type` is the controller's; everything outlives this object.
  FirmwareUpgrade(UserReport& report, Activity& activity, WorkerThreads& workers,
                  const std::atomic<int>& connect_type, Host host);

  /// The upgrade of the row `var` of a sensor's table. 0 if it was started or there is nothing to
  /// send: the row has no upgrade command, or the file can't be used. -1 without a connection or during
  /// another operation.
  int StartFromRow(const Session& session, const Catalogue& catalogue, const VarInfo* var,
                   const QString& path);

  /// The upgrade of a small sensor; `set_mode` selects what the package replaces. Results as above.
  int StartSmallSensor(const Session& session, const Catalogue& catalogue, const QString& path);

  /// The upgrade of a Marvo sensor: 0 if it was started, else -1; a refusal is reported.
  int StartMarvo(const Session& session, const QString& path);

  /// 0 application and FPGA, 1 PBL, 2 junction box.
  void set_mode(int mode) { mode_ = mode; }

  int progress() const {
    return static_cast<int>(progress_.load());
  }                                     ///< blocks of 1024 bytes, transferred or in transfer
  int total() const { return total_; }  ///< all blocks; 1 before the first upgrade

 private:
  using Send =
      std::function<void(const std::stop_token&, const std::vector<std::uint8_t>&, const UpgradeRun&)>;

  std::shared_ptr<PackageFile> OpenWithContent(const QString& path);
  void Start(const Session& session, const std::shared_ptr<PackageFile>& package, Send send);
  UpgradeRun Claimed(const Session& session);

  UserReport& report_;
  Activity& activity_;
  WorkerThreads& workers_;
  const std::atomic<int>& connect_type_;
  const Host host_;
  const MarvoUpgrade marvo_;
  std::atomic<std::uint32_t> progress_ = 0;
  std::atomic<int> total_ = 1;
  int mode_ = 0;
};

}  // namespace varkel
