#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include "libquarn/KtcClient/src/exchange_result.h"

namespace quarn::lidar {

/// The contents of a valid reply to a firmware frame.
struct OtaReply {
  std::uint8_t command = 0;  ///< the type of the frame that it answers
  std::uint8_t status = 0;   ///< 0: success, ready for the next frame
};

/// Exchanges with a small sensor, whichever way its frames travel: over serial lines (SerialClient) or inside
/// KTC (KtcSerialClient). One request, one reply; exchanges of several threads are serialised.
class SerialExchange {
 public:
  static constexpr int kNotSent = -1;      ///< not open, or the request could not be sent
  static constexpr int kWrongReply = -2;   ///< no valid reply within the time-out
  static constexpr int kNotReceived = -3;  ///< the line failed before the reply arrived

  virtual ~SerialExchange() = default;
  SerialExchange(const SerialExchange&) = delete;
  SerialExchange& operator=(const SerialExchange&) = delete;

  /// Sends a command: the whole reply frame, checked, or one of the codes above, or the positive code with
  /// which the sensor refused the frame's carrier.
  virtual ExchangeResult QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                    std::uint32_t timeout_ms) = 0;

  /// The same with the reply's body (length byte, command code, rest) only.
  ExchangeResult QueryCommand(std::uint8_t code, std::span<const std::uint8_t> payload,
                              std::uint32_t timeout_ms);

  /// Sends a firmware frame and waits up to `SensorTimeouts::ota_ms` for its reply; codes as above.
  virtual Exchanged<OtaReply> ExchangeOta(std::uint32_t first, std::uint32_t second,
                                          std::span<const std::uint8_t> data, std::uint8_t type) = 0;

  /// The mode that this client last put the sensor in: 11 standby, 0 operation.
  void set_current_mode(std::uint8_t mode) { current_mode_ = mode; }
  std::uint8_t current_mode() const { return current_mode_; }

 protected:
  SerialExchange() = default;

  /// Decodes a checked reply to a firmware frame.
  static OtaReply ReadOtaReply(const std::vector<std::uint8_t>& frame);

 private:
  std::atomic<std::uint8_t> current_mode_{0};
};

}  // namespace quarn::lidar
