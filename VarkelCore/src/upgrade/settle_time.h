#pragma once

#include <chrono>

namespace varkel {

/// Lets the exchange of a running periodic round end before an upgrade takes the line.
inline constexpr std::chrono::milliseconds kSettleTime{300};

}  // namespace varkel
