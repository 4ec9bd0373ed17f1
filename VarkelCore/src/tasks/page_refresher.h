#pragma once

#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

namespace varkel {

/// Runs a round of work every 100 ms on a thread of its own between Start and Stop.
class PageRefresher {
 public:
  using Round = std::function<void(const std::stop_token&)>;

  explicit PageRefresher(Round round) : round_(std::move(round)) {}
  ~PageRefresher() { Stop(); }
  PageRefresher(const PageRefresher&) = delete;
  PageRefresher& operator=(const PageRefresher&) = delete;

  /// Does nothing while the thread runs.
  void Start();
  /// Ends the thread at the end of its round and joins it. The caller interrupts what the round may wait for.
  void Stop();

 private:
  void updatePagesTimer(const std::stop_token& stop) const;

  const Round round_;
  std::mutex mutex_;  // guards thread_
  std::jthread thread_;
};

}  // namespace varkel
