#pragma once

#include "VarkelCore/src/session/sensor_session.h"

namespace varkel {

/// Asks the sensor for its configuration file (KTC command 116) and writes to standard output how it went.
/// The reply is dropped. Blocks for one exchange.
void QueryConfigFile(SensorSession& session);

}  // namespace varkel
