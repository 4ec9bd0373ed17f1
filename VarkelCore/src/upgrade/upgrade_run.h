#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

namespace varkel {

/// One claimed upgrade, as its worker sees it.
struct UpgradeRun {
  std::atomic<std::uint32_t>& progress;  ///< blocks transferred
  std::atomic<int>& total;               ///< blocks in all
  std::function<void()> end;             ///< clears "is upgrading" and announces it
  std::function<void()> disconnect;      ///< ends the session that the upgrade uses
};

/// Ends a run exactly once: when the worker calls Now, before its final message, or at the latest on
/// destruction.
class UpgradeEnd {
 public:
  explicit UpgradeEnd(std::function<void()> end) : end_(std::move(end)) {}
  ~UpgradeEnd() { Now(); }
  UpgradeEnd(const UpgradeEnd&) = delete;
  UpgradeEnd& operator=(const UpgradeEnd&) = delete;
  void Now() {
    if (const auto end = std::exchange(end_, {})) end();
  }

 private:
  std::function<void()> end_;
};

}  // namespace varkel
