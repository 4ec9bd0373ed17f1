#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/Source/src/serial_exchange.h"
#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {

/// Commands a small sensor whose serial frames travel inside KTC: command 0xFF, the two bytes 00 02, then the
/// whole frame, in the request as in the reply. Commands use the KTC client's time-out, firmware frames
/// `SensorTimeouts::ota_ms`; the client's log callback shows the bytes. Thread-safe.
class KtcSerialClient : public SerialExchange {
 public:
  explicit KtcSerialClient(std::shared_ptr<KtcClient> client) : client_(std::move(client)) {}

  ExchangeResult QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                            std::uint32_t timeout_ms) override;
  Exchanged<OtaReply> ExchangeOta(std::uint32_t first, std::uint32_t second,
                                  std::span<const std::uint8_t> data, std::uint8_t type) override;

 private:
  ExchangeResult Tunnel(ReplyKind kind, std::span<const std::uint8_t> request, std::uint32_t timeout_ms);

  const std::shared_ptr<KtcClient> client_;
};

/// The first bytes of the payloads of kKtcExtensionCmd for the serial line: a tunnelled frame, and the query
/// of the line's baud rate.
inline constexpr std::array<std::uint8_t, 2> kTunnelPrefix = {0x00, 0x02};
inline constexpr std::array<std::uint8_t, 2> kGetBaudRatePayload = {0x00, 0x01};
/// Sets the serial line's rate, in baud.
std::vector<std::uint8_t> SetBaudRatePayload(std::uint32_t baud_rate);

/// Whether this command's payload is a tunnelled serial frame.
bool CarriesSerialFrame(std::uint8_t command, std::span<const std::uint8_t> payload);

}  // namespace quarn::lidar
