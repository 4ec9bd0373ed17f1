#include "simulator/src/serial_log.h"

#include <algorithm>
#include <utility>

namespace varkel::sim {

void SerialLog::Add(SerialRequest request) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (requests_.size() == kCapacity) requests_.pop_front();
    requests_.push_back(std::move(request));
  }
  added_.notify_all();
}

void SerialLog::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  requests_.clear();
}

std::vector<SerialRequest> SerialLog::All() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return {requests_.begin(), requests_.end()};
}

bool SerialLog::WaitFor(const Condition& condition, std::size_t count,
                        std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return added_.wait_for(lock, timeout, [&] {
    const auto found = std::count_if(requests_.begin(), requests_.end(), condition);
    return static_cast<std::size_t>(found) >= count;
  });
}

}  // namespace varkel::sim
