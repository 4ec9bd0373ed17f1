#include "VarkelCore/src/session/exchange.h"

#include <utility>

#include "libquarn/Source/src/ktc_serial_client.h"

namespace varkel {

namespace {

ExchangeResult Query(quarn::lidar::KtcClient& client, std::uint8_t command,
                     std::span<const std::uint8_t> payload) {
  std::vector<std::uint8_t> reply;
  if (const auto failure = client.Query(payload, reply, command)) {
    return tl::unexpected(*failure != 0 ? *failure : kWithoutCode);
  }
  return reply;
}

}  // namespace

ExchangeResult QueryTableCommand(quarn::lidar::KtcClient& client, const Command& command,
                                 std::span<const std::uint8_t> payload) {
  ExchangeResult reply = Query(client, command.code, payload);
  if (reply && AnswersAnother(command, *reply)) return tl::unexpected(kWithoutCode);
  return reply;
}

ExchangeResult QueryKtcCommand(quarn::lidar::KtcClient& client, std::uint8_t command,
                               std::span<const std::uint8_t> payload) {
  ExchangeResult reply = Query(client, command, payload);
  // A serial command's late reply comes under the same command byte.
  if (reply && quarn::lidar::CarriesSerialFrame(command, *reply)) return tl::unexpected(kWithoutCode);
  return reply;
}

}  // namespace varkel
