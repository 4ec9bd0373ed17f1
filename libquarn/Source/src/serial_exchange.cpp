#include "libquarn/Source/src/serial_exchange.h"

#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {

int SerialExchange::QueryCommand(std::uint8_t code, std::span<const std::uint8_t> payload,
                                 std::vector<std::uint8_t>& body, std::uint32_t timeout_ms) {
  std::vector<std::uint8_t> frame;
  const int result = QueryFrame(code, payload, frame, timeout_ms);
  if (result == 0) {
    const std::span<const std::uint8_t> checked = ReplyBody(frame);
    body.assign(checked.begin(), checked.end());
  }
  return result;
}

OtaReply SerialExchange::ReadOtaReply(std::span<const std::uint8_t> frame) {
  const std::span<const std::uint8_t> body = ReplyBody(frame);
  return {body[kBodyCommand], body.back()};
}

}  // namespace quarn::lidar
