#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>

namespace varkel {

/// Waits for `duration` or until a stop is asked for; false when stopped.
bool SleepUnlessStopped(const std::stop_token& stop, std::chrono::milliseconds duration);

/// Threads for single pieces of long work. Nobody waits for one of them, but none outlives this object:
/// StopAndJoin asks all to stop and joins them. The owner makes sure that blocking calls inside the work
/// return then (for example by interrupting the client that they use).
class WorkerThreads {
 public:
  WorkerThreads() = default;
  ~WorkerThreads();
  WorkerThreads(const WorkerThreads&) = delete;
  WorkerThreads& operator=(const WorkerThreads&) = delete;

  /// Runs `work` on a thread of its own. After a stop nothing is started any more.
  /// An exception that leaves `work` ends only that thread.
  void Start(std::function<void(std::stop_token)> work);
  /// Asks all to stop without waiting for them; nothing is started any more.
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
