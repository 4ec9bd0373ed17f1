#include "libquarn/Source/src/serial_exchange.h"

#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {

ExchangeResult SerialExchange::QueryCommand(std::uint8_t code, std::span<const std::uint8_t> payload,
                                            std::uint32_t timeout_ms) {
  return QueryFrame(code, payload, timeout_ms).map([](const std::vector<std::uint8_t>& frame) {
    const std::span<const std::uint8_t> body = ReplyBody(frame);
    return std::vector<std::uint8_t>(body.begin(), body.end());
  });
}

OtaReply SerialExchange::ReadOtaReply(const std::vector<std::uint8_t>& frame) {
  const std::span<const std::uint8_t> body = ReplyBody(frame);
  return {body[kBodyCommand], body.back()};
}

}  // namespace quarn::lidar
