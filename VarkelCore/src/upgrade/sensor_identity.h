#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Identifies a sensor and its firmware.
struct SensorIdentity {
  struct Version {
    std::string name;
    std::string text;
  };
  std::string serial_number;      ///< empty if the table has none or the sensor did not answer
  std::vector<Version> versions;  ///< those that the sensor reported, in the order of the table's pages
};

/// Queries the sensor, once for each get command; what it does not answer is left out. Blocks for the
/// client's time-out at each unanswered command.
SensorIdentity ReadIdentity(quarn::lidar::KtcClient& client,
                            const std::shared_ptr<const ConfigParser>& catalogue);

/// "Firmware Version: 1.2.3.4 → 1.2.4.0", a line for each version that differs; empty if none does.
std::string VersionChanges(const SensorIdentity& before, const SensorIdentity& now);

}  // namespace varkel
