#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>

namespace varkel {

/// Waits for `duration` or until a stop is requested; false if stopped.
bool SleepUnlessStopped(const std::stop_token& stop, std::chrono::milliseconds duration);

/// Threads for individual long operations. They need not be waited for, but none outlives this object:
/// StopAndJoin requests all to stop and joins them. The owner makes sure that blocking calls inside the work
/// then return (for example by interrupting the client that they use).
class WorkerThreads {
 public:
  WorkerThreads() = default;
  ~WorkerThreads();
  WorkerThreads(const WorkerThreads&) = delete;
  WorkerThreads& operator=(const WorkerThreads&) = delete;

  /// Runs `work` on its own thread; does nothing after a stop. An exception that escapes from `work` ends
  /// only that thread.
  void Start(std::function<void(std::stop_token)> work);
  /// Requests all to stop without waiting for them; nothing more is started.
  void RequestStop();
  void StopAndJoin();

 private:
  struct Worker {
    std::atomic<bool> finished = false;
    std::jthread thread;
  };

  void JoinFinished();  // with mutex_ held

  std::mutex mutex_;  // guards what follows
  std::list<Worker> workers_;
  bool stopping_ = false;
};

}  // namespace varkel
