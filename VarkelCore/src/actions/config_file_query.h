#pragma once

#include "VarkelCore/src/session/sensor_session.h"

namespace varkel {

/// Requests the sensor's configuration file (KTC command 116) and prints whether the sensor answered. The
/// reply is discarded. Blocks for one exchange.
void QueryConfigFile(SensorSession& session);

}  // namespace varkel
