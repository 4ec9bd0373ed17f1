#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/values/exchange_decoder.h"

namespace varkel {

/// The commands that the protocols themselves define for every model (docs/protocol.md,
/// docs/serial-protocol.md): fields of view, pieces of files, frames of small sensors. Empty for any other
/// command.
std::string ProtocolCommandName(std::uint8_t command, std::span<const std::uint8_t> request);
std::vector<DecodedField> ProtocolRequestFields(std::uint8_t command, std::span<const std::uint8_t> request);
std::vector<DecodedField> ProtocolReplyFields(std::uint8_t command, std::span<const std::uint8_t> reply);

/// The parts of a serial frame, at their positions in `frame`; requests and replies (`is_reply`) differ in
/// length field and CRC.
std::vector<DecodedField> SerialFrameFields(std::span<const std::uint8_t> frame, bool is_reply);
/// "get item 10", "set item 9", "firmware frame 2"; empty if it is not a request frame.
std::string SerialFrameName(std::span<const std::uint8_t> frame);

}  // namespace varkel
