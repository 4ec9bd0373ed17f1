#pragma once

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// Sends the restart command of the model's table. 0 on success; -1 when the session has no open KTC client
/// or an upgrade or a download runs (without a message), or when the table has no such command; else the
/// sensor's code. Blocks for one exchange, which stays out of the byte log.
int RestartSensor(const ConfigParser& catalogue, SensorSession& session, UserReport& report);

/// The same for the command that resets all settings.
int ResetSensor(const ConfigParser& catalogue, SensorSession& session, UserReport& report);

}  // namespace varkel
