#include "VarkelCore/src/session/either_link.h"

#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/session/ktc_connect.h"

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
  const auto quiet = silent ? std::make_unique<ByteLog::Quiet>(network_.byte_log()) : nullptr;
  auto result = QueryKtcCommand(*client, command, payload);
  if (!result) return result.error();
  reply = std::move(*result);
  return 0;
}

}  // namespace varkel
