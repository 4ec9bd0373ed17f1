#pragma once

#include <cstdint>
#include <string>

#include "VarkelCore/src/session/small_sensor_channel.h"

namespace varkel {

/// The address to which a sensor in the network sends its data.
struct Destination {
  std::string ip;  ///< dotted decimal
  std::uint16_t port = 0;
};

/// Reads it from the sensor (KTC command 0x08); a reply that is too short is SerialExchange::kWrongReply.
Exchanged<Destination> ReadDestination(SmallSensorChannel& channel, SmallSensorChannel::Logged logged);

/// Writes it to the sensor (KTC command 0x20). An address that is not four decimal bytes, or a port beyond
/// 65535, is refused with SerialExchange::kNotSent.
Exchanged<void> WriteDestination(SmallSensorChannel& channel, const std::string& ip, int port);

}  // namespace varkel
