#include "VarkelCore/src/tasks/worker_threads.h"

#include <condition_variable>
#include <exception>
#include <utility>

#include "libquarn/Platform/src/trace.h"

namespace varkel {

bool SleepUnlessStopped(const std::stop_token& stop, std::chrono::milliseconds duration) {
  std::mutex mutex;
  std::condition_variable_any never;
  std::unique_lock lock(mutex);
  never.wait_for(lock, stop, duration, [] { return false; });
  return !stop.stop_requested();
}

WorkerThreads::~WorkerThreads() {
  StopAndJoin();
}

void WorkerThreads::Start(std::function<void(std::stop_token)> work) {
  const std::lock_guard lock(mutex_);
  if (stopping_) return;
  JoinFinished();
  Worker& worker = workers_.emplace_back();
  worker.thread = std::jthread([&worker, work = std::move(work)](const std::stop_token& stop) {
    try {
      work(stop);
    } catch (const std::exception& error) {
      quarn::platform::TraceLine(std::string("WorkerThreads::Start(): ") + error.what());
    }
    worker.finished = true;
  });
}

void WorkerThreads::RequestStop() {
  const std::lock_guard lock(mutex_);
  stopping_ = true;
  for (Worker& worker : workers_) worker.thread.request_stop();
}

void WorkerThreads::StopAndJoin() {
  RequestStop();
  std::list<Worker> leaving;
  {
    const std::lock_guard lock(mutex_);
    leaving.swap(workers_);
  }
  for (Worker& worker : leaving) worker.thread.join();
}

void WorkerThreads::JoinFinished() {
  workers_.remove_if([](const Worker& worker) { return worker.finished.load(); });
}

}  // namespace varkel
