#include "VarkelCore/src/tasks/page_refresher.h"

#include <chrono>

#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

namespace {
constexpr std::chrono::milliseconds kPeriod{100};  // bounds the load on the sensor
}

void PageRefresher::Start() {
  const std::lock_guard lock(mutex_);
  if (thread_.joinable()) return;
  thread_ = std::jthread([this](const std::stop_token& stop) { updatePagesTimer(stop); });
}

void PageRefresher::Stop() {
  std::jthread leaving;
  {
    const std::lock_guard lock(mutex_);
    leaving = std::move(thread_);
  }
}

void PageRefresher::updatePagesTimer(const std::stop_token& stop) const {
  do {
    round_(stop);
  } while (SleepUnlessStopped(stop, kPeriod));
}

}  // namespace varkel
