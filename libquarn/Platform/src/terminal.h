#pragma once

namespace quarn::lidar {

enum class StandardStream { kInput, kOutput, kError };

/// Whether a person sits at the other end. On Windows a terminal is made ready for UTF-8 and escape
/// sequences.
bool IsTerminal(StandardStream stream);

}  // namespace quarn::lidar
