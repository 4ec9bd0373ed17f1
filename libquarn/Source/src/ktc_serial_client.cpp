#include "libquarn/Source/src/ktc_serial_client.h"

#include <algorithm>

#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

constexpr std::uint32_t kClientTimeout = 0;  // the KTC client's own

}  // namespace

int KtcSerialClient::QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                std::vector<std::uint8_t>& frame, std::uint32_t /*timeout_ms*/) {
  return Tunnel(ReplyKind::kCommand, EncodeCommandFrame(code, payload, FreshNonce()), kClientTimeout, frame);
}

int KtcSerialClient::ExchangeOta(std::uint32_t first, std::uint32_t second,
                                 std::span<const std::uint8_t> data, std::uint8_t type, OtaReply& reply) {
  std::vector<std::uint8_t> frame;
  const int result =
      Tunnel(ReplyKind::kOta, EncodeOtaFrame(type, first, second, data), Timeouts().ota_ms, frame);
  if (result == 0) {
    reply = ReadOtaReply(frame);
  }
  return result;
}

int KtcSerialClient::Tunnel(ReplyKind kind, std::span<const std::uint8_t> request, std::uint32_t timeout_ms,
                            std::vector<std::uint8_t>& frame) {
  if (!client_ || !client_->IsOpen()) {
    return kNotSent;
  }
  std::vector<std::uint8_t> payload(kTunnelPrefix.begin(), kTunnelPrefix.end());
  payload.insert(payload.end(), request.begin(), request.end());
  const KtcClient::Result reply = client_->Query(payload, kKtcExtensionCmd, timeout_ms);
  if (!reply) {
    switch (const std::int32_t code = reply.error()) {
      case KtcClient::kNotSent:
        return kNotSent;
      case KtcClient::kNoHeader:
      case KtcClient::kNoPayload:
        return kNotReceived;
      default:
        return code > 0 ? code : kWrongReply;
    }
  }
  if (reply->size() < kTunnelPrefix.size() ||
      !std::equal(kTunnelPrefix.begin(), kTunnelPrefix.end(), reply->begin())) {
    return kWrongReply;
  }
  const std::span<const std::uint8_t> block =
      std::span<const std::uint8_t>(*reply).subspan(kTunnelPrefix.size());
  if (!CheckReply(kind, block)) {
    return kWrongReply;
  }
  frame.assign(block.begin(), block.end());
  return 0;
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
