#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "libquarn/KtcClient/src/ktc_parser.h"
#include "simulator/src/command_handler.h"

namespace varkel::sim {

/// The frame layout of version 1 or 2; any other number counts as 1.
const quarn::lidar::GeneralKtcParser& ParserOf(std::uint8_t version);

/// A complete reply frame. `length_lie` is added to the payload length in the header, which stays within 32
/// bits.
std::vector<std::uint8_t> ReplyFrame(std::uint8_t version, std::uint8_t command, const Reply& reply,
                                     std::int64_t length_lie);

/// `size` bytes that contain no start of a frame.
std::vector<std::uint8_t> Noise(std::size_t size);

}  // namespace varkel::sim
