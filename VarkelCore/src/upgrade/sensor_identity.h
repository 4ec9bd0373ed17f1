#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Which sensor it is and what runs on it.
struct SensorIdentity {
  struct Version {
    std::string name;
    std::string text;
  };
  std::string serial_number;      ///< empty: the table has none, or it was not answered
  std::vector<Version> versions;  ///< those that were answered, in the order of the table's pages
};

/// Asks the sensor, with one exchange for the variables of one get command; what is not answered is left out.
/// Blocks for the client's time-out with each silent one.
SensorIdentity ReadIdentity(quarn::lidar::KtcClient& client,
                            const std::shared_ptr<const ConfigParser>& catalogue);

/// "Firmware Version: 1.2.3.4 → 1.2.4.0", a line for each version that differs; empty when none does.
std::string VersionChanges(const SensorIdentity& before, const SensorIdentity& now);

}  // namespace varkel
