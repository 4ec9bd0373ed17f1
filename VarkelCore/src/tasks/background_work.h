#pragma once

#include <functional>

#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// Work that the window starts and is notified about when it ends. Used from the thread that owns the queue.
class BackgroundWork {
 public:
  /// `running_changed` is called whenever a piece of work begins or ends.
  BackgroundWork(WorkerThreads& workers, EventQueue& events, std::function<void()> running_changed);

  /// Runs `work` on a worker; `finished` follows on the queue's thread.
  void Start(std::function<void()> work, std::function<void()> finished);
  bool is_running() const { return running_ > 0; }

 private:
  WorkerThreads& workers_;
  EventQueue& events_;
  const std::function<void()> running_changed_;
  int running_ = 0;  ///< used on the queue's thread only
};

}  // namespace varkel
