#pragma once

#include <chrono>

namespace varkel {

/// Time for a running periodic round to finish its exchange before an upgrade uses the line.
inline constexpr std::chrono::milliseconds kSettleTime{300};

}  // namespace varkel
