#pragma once

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Sends the restart command of the model's table: 0, -1 when the table has none, else the sensor's code.
/// A refusal is reported.
int RestartSensor(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, UserReport& report);

/// The same for the command that resets all settings.
int ResetSensor(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, UserReport& report);

}  // namespace varkel
