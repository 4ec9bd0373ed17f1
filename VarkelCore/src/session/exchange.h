#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "VarkelCore/src/catalogue/command_text.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// What one exchange with the sensor came to: the reply's payload, or the code that says why there is none.
/// Positive codes are the sensor's own, negative ones the client's (KtcClient::kOtherReply and its
/// neighbours).
using ExchangeResult = quarn::lidar::KtcClient::Result;

/// One exchange of a table's command. The payload of a reply to a four-byte command begins with that code.
/// Blocks for the client's time-out at most.
ExchangeResult QueryTableCommand(quarn::lidar::KtcClient& client, const Command& command,
                                 std::span<const std::uint8_t> payload);

/// One exchange of a plain KTC command.
ExchangeResult QueryKtcCommand(quarn::lidar::KtcClient& client, std::uint8_t command,
                               std::span<const std::uint8_t> payload);

}  // namespace varkel
