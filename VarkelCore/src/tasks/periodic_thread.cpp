#include "VarkelCore/src/tasks/periodic_thread.h"

#include <utility>

#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

PeriodicThread::PeriodicThread(std::chrono::milliseconds period, Round round)
    : thread_([period, round = std::move(round)](const std::stop_token& stop) {
        do {
          round(stop);
        } while (SleepUnlessStopped(stop, period));
      }) {}

void PeriodicThread::RequestStop() {
  const std::lock_guard lock(mutex_);
  thread_.request_stop();
}

void PeriodicThread::Stop() {
  const std::lock_guard lock(mutex_);
  if (!thread_.joinable()) return;
  thread_.request_stop();
  thread_.join();
}

}  // namespace varkel
