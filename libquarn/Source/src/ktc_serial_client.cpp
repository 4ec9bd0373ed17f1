#include "libquarn/Source/src/ktc_serial_client.h"

#include <algorithm>

#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

constexpr std::uint32_t kClientTimeout = 0;  // the KTC client's own

// Maps a KTC client's code to that of a serial exchange.
std::int32_t SerialCode(std::int32_t ktc_code) {
  switch (ktc_code) {
    case KtcClient::kNotSent:
      return SerialExchange::kNotSent;
    case KtcClient::kNoHeader:
    case KtcClient::kNoPayload:
      return SerialExchange::kNotReceived;
    default:
      return ktc_code > 0 ? ktc_code : SerialExchange::kWrongReply;
  }
}

}  // namespace

ExchangeResult KtcSerialClient::QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                           std::uint32_t /*timeout_ms*/) {
  return Tunnel(ReplyKind::kCommand, EncodeCommandFrame(code, payload, FreshNonce()), kClientTimeout);
}

Exchanged<OtaReply> KtcSerialClient::ExchangeOta(std::uint32_t first, std::uint32_t second,
                                                 std::span<const std::uint8_t> data, std::uint8_t type) {
  return Tunnel(ReplyKind::kOta, EncodeOtaFrame(type, first, second, data), Timeouts().ota_ms)
      .map(ReadOtaReply);
}

ExchangeResult KtcSerialClient::Tunnel(ReplyKind kind, std::span<const std::uint8_t> request,
                                       std::uint32_t timeout_ms) {
  if (!client_ || !client_->IsOpen()) {
    return tl::unexpected(kNotSent);
  }
  std::vector<std::uint8_t> payload(kTunnelPrefix.begin(), kTunnelPrefix.end());
  payload.insert(payload.end(), request.begin(), request.end());
  ExchangeResult reply = client_->Query(payload, kKtcExtensionCmd, timeout_ms).map_error(SerialCode);
  if (!reply) {
    return reply;
  }
  if (reply->size() < kTunnelPrefix.size() ||
      !std::equal(kTunnelPrefix.begin(), kTunnelPrefix.end(), reply->begin())) {
    return tl::unexpected(kWrongReply);
  }
  const std::span<const std::uint8_t> block =
      std::span<const std::uint8_t>(*reply).subspan(kTunnelPrefix.size());
  if (!CheckReply(kind, block)) {
    return tl::unexpected(kWrongReply);
  }
  return std::vector<std::uint8_t>(block.begin(), block.end());
}

bool CarriesSerialFrame(std::uint8_t command, std::span<const std::uint8_t> payload) {
  constexpr std::uint8_t kTagBegin = '$';
  return command == kKtcExtensionCmd && payload.size() > kTunnelPrefix.size() &&
         std::equal(kTunnelPrefix.begin(), kTunnelPrefix.end(), payload.begin()) &&
         payload[kTunnelPrefix.size()] == kTagBegin;
}

std::vector<std::uint8_t> SetBaudRatePayload(std::uint32_t baud_rate) {
  std::vector<std::uint8_t> payload = {0x00, 0x01, 0x39, 0, 0, 0, 0};
  StoreBigEndian(payload, 3, baud_rate);
  return payload;
}

}  // namespace quarn::lidar
