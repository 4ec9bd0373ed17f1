#include "VarkelCore/src/either_link.h"

#include <optional>

namespace varkel {

std::shared_ptr<quarn::lidar::SerialExchange> EitherLink::KtcExchange() const {
  if (auto exchange = serial_.KtcExchange()) return exchange;
  auto client = network_.usable_client();
  return client ? std::make_shared<quarn::lidar::KtcSerialClient>(std::move(client)) : nullptr;
}

int EitherLink::QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                         std::vector<std::uint8_t>& reply, bool silent) {
  if (serial_.ktc_client()) return serial_.QueryKtc(command, payload, reply, silent);
  const auto client = network_.usable_client();
  if (!client) return quarn::lidar::SerialExchange::kNotSent;
  std::optional<LidarConnection::Quiet> quiet;
  if (silent) quiet.emplace(network_);
  const int result = client->QueryCommand(payload, reply, command);
  const int code = client->LastReturnCode();
  return result != 0 && code != 0 ? code : result;
}

}  // namespace varkel
