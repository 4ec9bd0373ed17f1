#pragma once

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// Sends the restart command of the model's table. Returns 0 on success; -1 if the session has no open KTC
/// client or an upgrade or a download is running (without a message), or if the table has no such command;
/// otherwise the sensor's code. Blocks for one exchange, which is kept out of the byte log.
int RestartSensor(const ConfigParser& catalogue, SensorSession& session, UserReport& report);

/// The same for the command that resets all settings.
int ResetSensor(const ConfigParser& catalogue, SensorSession& session, UserReport& report);

}  // namespace varkel
