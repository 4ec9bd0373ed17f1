#pragma once

#include <string>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/recent_addresses.h"
#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// Remembers how the user connects: the settings, kept in the settings file, and the addresses of successful
/// connections. A file that can't be written is reported as a warning. Used from the window's thread.
class ConnectionMemory {
 public:
  /// Reads the settings file. `report` outlives this object.
  explicit ConnectionMemory(UserReport& report);

  /// The user's settings for the next attempt.
  ConnectionSettings& settings() { return settings_; }
  /// A sentence saying why the default settings are used; empty if they were read.
  const std::string& load_fault() const { return load_fault_; }
  RecentAddresses& recent_addresses() { return recent_addresses_; }

  /// An attempt with the present settings has been started: saves them.
  void Dialled();
  /// The tool's session has begun or ended (null): adds the address of a new one to the recent addresses.
  void SessionChanged(const SensorSession* session);

 private:
  UserReport& report_;
  const SettingsFile settings_file_;
  std::string load_fault_;
  ConnectionSettings settings_;
  std::string dialled_;  ///< the address of the last attempt: `settings_` may have been edited since
  RecentAddresses recent_addresses_;
};

}  // namespace varkel
