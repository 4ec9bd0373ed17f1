#pragma once

#include <functional>

#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// Checks whether the connected sensor answers, with up to two exchanges. Used from the queue's thread.
class ConnectionCheck {
 public:
  /// `finished` is called on the queue's thread. All arguments outlive this object, and `workers` is joined
  /// before it is destroyed.
  ConnectionCheck(const SensorConnection& connection, WorkerThreads& workers, EventQueue& events,
                  std::function<void(bool answers)> finished);

  /// Checks on the calling thread; false without a connection.
  bool SensorAnswers() const;
  /// Checks on a worker; does nothing while a check is running.
  void Start();

 private:
  const SensorConnection& connection_;
  WorkerThreads& workers_;
  EventQueue& events_;
  const std::function<void(bool)> finished_;
  bool is_running_ = false;
};

}  // namespace varkel
