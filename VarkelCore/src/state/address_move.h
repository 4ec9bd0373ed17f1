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

/// Where a sensor answers KTC.
struct SensorAddress {
  std::string host;
  std::uint16_t port = 0;
};

std::string AddressText(const SensorAddress& address);

/// A way to another address: null when nothing answers KTC there. A stop ends the attempt at once.
using ConnectTo =
    std::function<std::shared_ptr<quarn::lidar::KtcClient>(const SensorAddress&, const std::stop_token&)>;

/// How a change of address is followed. Without `connect` it is not.
struct MoveOptions {
  SensorAddress present{};  ///< where the sensor is connected
  ConnectTo connect{};
  std::chrono::milliseconds timeout{30000};  ///< how long the sensor may take to come
};

/// Where the sensor answers once the command has gone out; nullopt when it is no address command or leaves
/// address and port as they are. The command's first field of type "IP" is the address, its first of type
/// "uint16" the port.
std::optional<SensorAddress> AddressAfter(const ConfigParser& catalogue, const PlannedCommand& command,
                                          const SensorAddress& present);

/// Tries the new address until the sensor answers there, the time is over or a stop is requested: null then.
std::shared_ptr<quarn::lidar::KtcClient> FollowTo(const SensorAddress& address, const MoveOptions& options,
                                                  const std::stop_token& stop);

/// Why a sensor that did not come may be out of reach: both addresses, this computer's own, and whether one
/// of them is in the new one's subnet.
std::string NotReachedText(const SensorAddress& from, const SensorAddress& to,
                           std::chrono::milliseconds waited);

}  // namespace varkel
