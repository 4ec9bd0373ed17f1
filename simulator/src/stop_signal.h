#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace varkel::sim {

/// A wait that another thread can end permanently. Thread-safe.
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

  /// True if the signal was raised, false on time-out.
  bool WaitFor(std::chrono::milliseconds time) const {
    return WaitUntil(std::chrono::steady_clock::now() + time);
  }

  /// The same until a point in time, which may be in the past.
  bool WaitUntil(std::chrono::steady_clock::time_point moment) const {
    std::unique_lock<std::mutex> lock(mutex_);
    if (moment <= std::chrono::steady_clock::now()) return raised_;  // avoids a system call
    return changed_.wait_until(lock, moment, [this] { return raised_; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  bool raised_ = false;  // guarded by mutex_
};

}  // namespace varkel::sim
