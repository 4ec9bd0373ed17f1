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

Exchanged<std::uint8_t> SetItem(SerialExchange& exchange, std::uint8_t item, std::uint8_t value) {
  const std::array<std::uint8_t, 2> payload = {item, value};
  const ExchangeResult body = exchange.QueryCommand(kSetRequest, payload, Timeouts().command_ms);
  if (!body) {
    return tl::unexpected(body.error());
  }
  if (body->size() != kSetReplySize || !Answers(*body, kSetRequest, item)) {
    return tl::unexpected(SerialExchange::kWrongReply);
  }
  return (*body)[kReplyValue];
}

ExchangeResult GetItem(SerialExchange& exchange, std::span<const std::uint8_t> payload,
                       std::size_t min_size) {
  ExchangeResult body = exchange.QueryCommand(kGetRequest, payload, Timeouts().command_ms);
  if (body && (body->size() < min_size || !Answers(*body, kGetRequest, payload.front()))) {
    return tl::unexpected(SerialExchange::kWrongReply);
  }
  return body;
}

}  // namespace quarn::lidar
