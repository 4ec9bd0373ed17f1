#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "VarkelCore/src/catalogue/command_text.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

using quarn::lidar::Exchanged;
using quarn::lidar::ExchangeResult;

/// For `map`: of a reply that has nothing to say only matters that it came.
inline void DropReply(const std::vector<std::uint8_t>& /*reply*/) {}

/// One exchange of a table's command. The payload of a reply to a four-byte command begins with that code.
/// Blocks for the client's time-out at most.
ExchangeResult QueryTableCommand(quarn::lidar::KtcClient& client, const Command& command,
                                 std::span<const std::uint8_t> payload);

/// One exchange of a plain KTC command.
ExchangeResult QueryKtcCommand(quarn::lidar::KtcClient& client, std::uint8_t command,
                               std::span<const std::uint8_t> payload);

}  // namespace varkel
