#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "libquarn/Source/src/serial_exchange.h"

namespace varkel {

/// What the functions of a small sensor need of its connection. Every call may come from any thread; whoever
/// took an exchange keeps it for the length of an operation.
class SmallSensorLink {
 public:
  virtual ~SmallSensorLink() = default;

  virtual bool is_connected() const = 0;

  /// Serial commands inside KTC; null without a KTC client.
  virtual std::shared_ptr<quarn::lidar::SerialExchange> KtcExchange() const = 0;

  /// Serial commands over the two serial lines; null without them.
  virtual std::shared_ptr<quarn::lidar::SerialExchange> LineExchange() const = 0;

  /// Serial commands over whichever of the two there is; null when not connected.
  std::shared_ptr<quarn::lidar::SerialExchange> Exchange() const {
    auto exchange = KtcExchange();
    return exchange ? exchange : LineExchange();
  }

  /// One KTC command: 0 or an error code (the sensor's, or the client's negative one). `silent` keeps it out
  /// of the byte log.
  virtual int QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                       std::vector<std::uint8_t>& reply, bool silent) = 0;
};

}  // namespace varkel
