#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "VarkelCore/src/catalogue/command_text.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// The result of one exchange with the sensor: the reply's payload, or the code that says why there is none.
/// Positive codes are the sensor's own, negative ones the client's (KtcClient::kOtherReply and following).
using ExchangeResult = quarn::lidar::KtcClient::Result;

/// Exchanges a command of the table. The payload of a reply to a four-byte command begins with that code.
/// Blocks for at most the client's time-out.
ExchangeResult QueryTableCommand(quarn::lidar::KtcClient& client, const Command& command,
                                 std::span<const std::uint8_t> payload);

/// Exchanges a plain KTC command.
ExchangeResult QueryKtcCommand(quarn::lidar::KtcClient& client, std::uint8_t command,
                               std::span<const std::uint8_t> payload);

}  // namespace varkel
