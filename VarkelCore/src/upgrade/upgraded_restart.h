#pragma once

#include <functional>
#include <memory>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/session_disconnect.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/upgrade/sensor_return.h"

namespace varkel {

/// Restarts a sensor after its upgrade, disconnects, and waits for a network sensor to come back.
/// Thread-safe.
class UpgradedRestart {
 public:
  using Session = std::shared_ptr<SensorSession>;
  using Catalogue = std::shared_ptr<const ConfigParser>;
  /// Sends the table's restart command: 0 on success.
  using RestartFunction = std::function<int(const ConfigParser&, SensorSession&, UserReport&)>;

  /// `settings` are those of the tool's connection, read on the thread of `sensor_return`. All arguments
  /// outlive this object.
  UpgradedRestart(RestartFunction restart, UserReport& report, const SessionDisconnect& disconnect,
                  SensorReturn& sensor_return, const ConnectionSettings& settings);

  /// Restarts that session's sensor, on the calling worker; blocks for a few exchanges. Returns the result of
  /// the restart command; unless it is 0, the connection is kept.
  int Restart(const Session& session, const Catalogue& catalogue) const;

 private:
  const RestartFunction restart_;
  UserReport& report_;
  const SessionDisconnect& disconnect_;
  SensorReturn& sensor_return_;
  const ConnectionSettings& settings_;
};

}  // namespace varkel
