#pragma once

#include <iostream>
#include <string>

namespace quarn::platform {

/// Writes a line to standard output, for users who run the program from a terminal. In one write, so that
/// lines of several threads don't mix. Thread-safe.
inline void TraceLine(const std::string& text) {
  std::cout << text + "\n" << std::flush;
}

}  // namespace quarn::platform
