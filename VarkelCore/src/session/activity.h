#pragma once

#include <atomic>
#include <functional>
#include <utility>

namespace varkel {

/// The long operations that exclude other work: a firmware upgrade, a log download, a change that writes many
/// values to the sensor. There is one object for the whole tool, since an upgrade continues even when its
/// connection is lost. Thread-safe.
class Activity {
 public:
  /// Called after the flag has changed, on the thread that changed it.
  struct Events {
    std::function<void()> upgrading_changed;
    std::function<void()> downloading_changed;
  };

  explicit Activity(Events events) : events_(std::move(events)) {}

  bool is_upgrading() const { return upgrading_; }
  bool is_downloading() const { return downloading_; }
  bool is_changing() const { return changing_; }
  bool is_busy() const { return upgrading_ || downloading_ || changing_; }

  /// Claims the upgrade; false if one is already running.
  bool BeginUpgrade() {
    if (upgrading_.exchange(true)) return false;
    events_.upgrading_changed();
    return true;
  }
  void EndUpgrade() {
    if (upgrading_.exchange(false)) events_.upgrading_changed();
  }

  void BeginChange() { changing_ = true; }
  void EndChange() { changing_ = false; }

  void SetDownloading(bool running) {
    if (downloading_.exchange(running) != running) events_.downloading_changed();
  }

 private:
  const Events events_;
  std::atomic<bool> upgrading_ = false;
  std::atomic<bool> downloading_ = false;
  std::atomic<bool> changing_ = false;
};

}  // namespace varkel
