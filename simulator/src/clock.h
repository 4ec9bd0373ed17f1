#pragma once

#include <chrono>
#include <functional>

namespace varkel::sim {

/// Time since the sensor's first power-up. Called from several threads.
using Clock = std::function<std::chrono::milliseconds()>;

/// The steady clock, with now as the power-up.
inline Clock SteadyClock() {
  const auto start = std::chrono::steady_clock::now();
  return [start] {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
  };
}

}  // namespace varkel::sim
