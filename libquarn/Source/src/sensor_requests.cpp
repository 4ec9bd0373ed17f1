#include "libquarn/Source/src/sensor_requests.h"

#include <array>

#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {
namespace {

constexpr std::size_t kSetReplySize = 5;

bool Answers(std::span<const std::uint8_t> body, std::uint8_t request, std::uint8_t item) {
  return body.size() > kReplyItem && body[kBodyCommand] == request && body[kReplyItem] == item;
}

}  // namespace

int SetItem(SerialExchange& exchange, std::uint8_t item, std::uint8_t value, std::uint8_t& answer) {
  const std::array<std::uint8_t, 2> payload = {item, value};
  std::vector<std::uint8_t> body;
  const int result = exchange.QueryCommand(kSetRequest, payload, body, Timeouts().command_ms);
  if (result != 0) {
    return result;
  }
  if (body.size() != kSetReplySize || !Answers(body, kSetRequest, item)) {
    return SerialExchange::kWrongReply;
  }
  answer = body[kReplyValue];
  return 0;
}

int GetItem(SerialExchange& exchange, std::span<const std::uint8_t> payload, std::size_t min_size,
            std::vector<std::uint8_t>& body) {
  const int result = exchange.QueryCommand(kGetRequest, payload, body, Timeouts().command_ms);
  if (result != 0) {
    return result;
  }
  const bool good = body.size() >= min_size && Answers(body, kGetRequest, payload.front());
  return good ? 0 : SerialExchange::kWrongReply;
}

}  // namespace quarn::lidar
