#pragma once

#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/session/session_disconnect.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Restarts and resets the connected sensor with the commands of the selected model's table. Thread-safe.
class RestartCommands {
 public:
  /// All arguments outlive this object.
  RestartCommands(const SensorConnection& connection, const ModelSelection& models, UserReport& report,
                  const SessionDisconnect& disconnect)
      : connection_(connection), models_(models), report_(report), disconnect_(disconnect) {}

  // Both block for one exchange. They return the results of RestartSensor, and -1 without a connection or a
  // model.

  int Restart() const;  ///< on success, the tool disconnects from the sensor
  int Reset() const;

 private:
  const SensorConnection& connection_;
  const ModelSelection& models_;
  UserReport& report_;
  const SessionDisconnect& disconnect_;
};

}  // namespace varkel
