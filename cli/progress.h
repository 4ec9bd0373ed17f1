#pragma once

#include <chrono>
#include <cstddef>

#include "cli/console.h"

namespace varkel::cli {

/// A progress bar on standard error for work that takes longer than a second; only on a terminal.
/// Thread-safe.
class Progress {
 public:
  explicit Progress(Console& console) : console_(console) {}
  ~Progress() { console_.Status({}); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(std::size_t done, std::size_t total);

 private:
  Console& console_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace varkel::cli
