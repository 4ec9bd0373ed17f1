#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace varkel::sim {

/// A wait that another thread can end for good. Thread-safe.
class StopSignal {
 public:
  void Raise() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      raised_ = true;
    }
    changed_.notify_all();
  }

  bool raised() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return raised_;
  }

  /// True when the signal was raised, false when the time went by.
  bool WaitFor(std::chrono::milliseconds time) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, time, [this] { return raised_; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  bool raised_ = false;  // guarded by mutex_
};

}  // namespace varkel::sim
