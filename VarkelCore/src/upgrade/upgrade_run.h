#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

namespace varkel {

/// One claimed upgrade, as its worker sees it.
struct UpgradeRun {
  std::atomic<std::uint32_t>& progress;  ///< blocks that are through
  std::atomic<int>& total;               ///< blocks in all
  std::function<void()> end;             ///< lowers and announces "is upgrading"
  std::function<void()> disconnect;      ///< ends the session that the upgrade began with
};

/// Ends a run once: where the worker says so, before its final message, or at the latest when it leaves.
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
