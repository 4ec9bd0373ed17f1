#pragma once

namespace quarn::lidar {

enum class StandardStream { kInput, kOutput, kError };

/// Whether the stream is a terminal. On Windows, also prepares the terminal for UTF-8 and escape sequences.
bool IsTerminal(StandardStream stream);

}  // namespace quarn::lidar
