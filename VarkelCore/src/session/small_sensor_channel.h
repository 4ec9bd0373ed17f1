#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "VarkelCore/src/session/exchange.h"
#include "libquarn/Source/src/serial_exchange.h"

namespace varkel {

/// The part of a session that the functions of a small sensor use. Thread-safe; callers hold an exchange for
/// the length of an operation.
class SmallSensorChannel {
 public:
  virtual ~SmallSensorChannel() = default;

  /// Serial commands inside KTC; null without a KTC client.
  virtual std::shared_ptr<quarn::lidar::SerialExchange> ktc_exchange() const = 0;

  /// Serial commands over the two serial lines; null without them.
  virtual std::shared_ptr<quarn::lidar::SerialExchange> line_exchange() const = 0;

  /// Serial commands over whichever of the two exists.
  std::shared_ptr<quarn::lidar::SerialExchange> serial_exchange() const {
    auto exchange = ktc_exchange();
    return exchange ? exchange : line_exchange();
  }

  enum class Logged { kYes, kNo };
  /// Exchanges one KTC command; SerialExchange::kNotSent without a KTC client. `logged` says whether the byte
  /// log may show it.
  virtual ExchangeResult QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                                  Logged logged) = 0;

 protected:
  SmallSensorChannel() = default;
  SmallSensorChannel(const SmallSensorChannel&) = default;
  SmallSensorChannel& operator=(const SmallSensorChannel&) = default;
};

}  // namespace varkel
