#pragma once

#include <memory>
#include <span>
#include <vector>

#include "VarkelCore/src/session/lidar_connection.h"
#include "VarkelCore/src/session/serial_connection.h"
#include "VarkelCore/src/session/small_sensor_link.h"

namespace varkel {

/// The functions of small sensors over whatever connection stands: their own, or one to a sensor in the
/// network, which hosts use for them too.
class EitherLink : public SmallSensorLink {
 public:
  EitherLink(LidarConnection& network, SerialConnection& serial) : network_(network), serial_(serial) {}

  bool is_connected() const override { return network_.is_connected() || serial_.is_connected(); }
  std::shared_ptr<quarn::lidar::SerialExchange> KtcExchange() const override;
  std::shared_ptr<quarn::lidar::SerialExchange> LineExchange() const override {
    return serial_.LineExchange();
  }
  int QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& reply,
               bool silent) override;

 private:
  LidarConnection& network_;
  SerialConnection& serial_;
};

}  // namespace varkel
