#pragma once

#include <cstdint>
#include <vector>

#include "simulator/src/ota_store.h"
#include "simulator/src/serial_request.h"
#include "simulator/src/small_sensor_state.h"

namespace varkel::sim {

/// A small sensor's reply to a request.
struct SerialReply {
  quarn::lidar::ReplyKind kind = quarn::lidar::ReplyKind::kCommand;
  std::uint8_t code = 0;               ///< the request's
  std::vector<std::uint8_t> contents;  ///< the bytes after the code
};

/// Answers every request that a small sensor supports. Thread-safe.
///
/// A refused set or firmware frame has the reason as its status. A get has no status: its refusal ends after
/// the item, with the reason as the only byte.
class SmallSensorHandler {
 public:
  /// Both must outlive the handler.
  SmallSensorHandler(SmallSensorState& state, OtaStore& firmware) : state_(state), firmware_(firmware) {}

  SerialReply Handle(const SerialRequest& request);

  /// The reply of a sensor that refuses the request.
  static SerialReply Refuse(const SerialRequest& request, std::uint8_t reason);

 private:
  SerialReply Set(const SerialRequest& request);
  SerialReply Get(const SerialRequest& request);
  SerialReply SetImuRange(const SerialRequest& request);
  SerialReply Version(const SerialRequest& request) const;
  SerialReply TakeFirmware(const SerialRequest& request);
  void Install(const ReceivedFirmware& firmware);

  SmallSensorState& state_;
  OtaStore& firmware_;
};

}  // namespace varkel::sim
