#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace varkel {

/// Repeats a round of work on its own thread, from construction until Stop or destruction.
class PeriodicThread {
 public:
  using Round = std::function<void(const std::stop_token&)>;

  /// The first round begins at once, each following one `period` after the end of the previous one.
  PeriodicThread(std::chrono::milliseconds period, Round round);
  ~PeriodicThread() { Stop(); }
  PeriodicThread(const PeriodicThread&) = delete;
  PeriodicThread& operator=(const PeriodicThread&) = delete;

  /// Asks the round to end without waiting for it.
  void RequestStop();
  /// Asks the round to end and joins the thread; may be called more than once and from several threads, but
  /// not from the round itself. The caller interrupts anything that the round may be waiting for.
  void Stop();

 private:
  std::mutex mutex_;  // guards thread_
  std::jthread thread_;
};

}  // namespace varkel
