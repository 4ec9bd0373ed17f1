#pragma once

#include <optional>

namespace quarn::platform {

/// Sizes of the primary screen in pixels. They differ if the desktop scales programs up.
struct ScreenMetrics {
  int logical_width = 0;    ///< as programs see it
  int logical_height = 0;   ///< as programs see it
  int physical_width = 0;   ///< as the screen shows it
  int physical_height = 0;  ///< as the screen shows it
};

/// Asks the desktop; nullopt if there is no screen or it doesn't answer. Uses a connection of its own, so it
/// works before any user interface exists.
std::optional<ScreenMetrics> ReadScreenMetrics();

}  // namespace quarn::platform
