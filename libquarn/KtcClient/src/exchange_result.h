#pragma once

#include <cstdint>
#include <tl/expected.hpp>
#include <vector>

namespace quarn::lidar {

/// What an exchange with a sensor came to: what its reply says, or the code that says why there is no such
/// reply. Positive codes (1 to 255) are the sensor's own; negative ones are the client's, from `KtcClient` or
/// `SerialExchange`.
template <typename Value>
using Exchanged = tl::expected<Value, std::int32_t>;

/// An exchange whose reply is kept as bytes.
using ExchangeResult = Exchanged<std::vector<std::uint8_t>>;

}  // namespace quarn::lidar
