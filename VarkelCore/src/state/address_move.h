#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/state/set_plan.h"
#include "VarkelCore/src/values/model_selection.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// The address at which a sensor answers KTC.
struct SensorAddress {
  std::string host;
  std::uint16_t port = 0;
};

std::string AddressText(const SensorAddress& address);

/// Connects to another address; null if nothing answers KTC there. A stop ends the attempt at once.
using ConnectTo =
    std::function<std::shared_ptr<quarn::lidar::KtcClient>(const SensorAddress&, const std::stop_token&)>;

/// How to follow a sensor to its new address; without `connect` it is not followed.
struct MoveOptions {
  SensorAddress present{};  ///< the sensor's current address
  ConnectTo connect{};
  std::chrono::milliseconds timeout{30000};  ///< how long the sensor may take to answer there
};

/// The sensor's address after the command; nullopt if it is not the address command or leaves address and
/// port unchanged. The command's first field of type "IP" is the address, its first field of type "uint16"
/// the port.
std::optional<SensorAddress> AddressAfter(const ConfigParser& catalogue, const PlannedCommand& command,
                                          const SensorAddress& present);

/// Tries the new address until the sensor answers there; null after the time-out or a stop.
std::shared_ptr<quarn::lidar::KtcClient> FollowTo(const SensorAddress& address, const MoveOptions& options,
                                                  const std::stop_token& stop);

/// Explains why a sensor may be out of reach at its new address: both addresses, this computer's own ones,
/// and whether one of these is in the new address's subnet.
std::string NotReachedText(const SensorAddress& from, const SensorAddress& to,
                           std::chrono::milliseconds waited);

}  // namespace varkel
