#pragma once

#include <iostream>
#include <string>

namespace quarn::platform {

/// Writes a line for whoever runs the program from a terminal to standard output: in one write, so that lines
/// of several threads don't mix. Any thread.
inline void TraceLine(const std::string& text) {
  std::cout << text + "\n" << std::flush;
}

}  // namespace quarn::platform
