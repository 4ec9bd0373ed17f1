#include "VarkelCore/src/session/exchange.h"

#include "libquarn/Source/src/ktc_serial_client.h"

namespace varkel {

ExchangeResult QueryTableCommand(quarn::lidar::KtcClient& client, const Command& command,
                                 std::span<const std::uint8_t> payload) {
  ExchangeResult reply = client.Query(payload, command.code);
  if (reply && AnswersOtherCommand(command, *reply)) {
    return tl::unexpected(quarn::lidar::KtcClient::kOtherReply);
  }
  return reply;
}

ExchangeResult QueryKtcCommand(quarn::lidar::KtcClient& client, std::uint8_t command,
                               std::span<const std::uint8_t> payload) {
  ExchangeResult reply = client.Query(payload, command);
  // The late reply to a serial command has the same command byte.
  if (reply && quarn::lidar::CarriesSerialFrame(command, *reply)) {
    return tl::unexpected(quarn::lidar::KtcClient::kOtherReply);
  }
  return reply;
}

}  // namespace varkel
