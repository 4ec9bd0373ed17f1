#include "simulator/src/exchange_log.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace varkel::sim {

void ExchangeLog::Add(ReceivedRequest request) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (requests_.size() == kCapacity) requests_.pop_front();
    requests_.push_back(std::move(request));
    ++total_;
  }
  added_.notify_all();
}

void ExchangeLog::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  requests_.clear();
}

std::vector<ReceivedRequest> ExchangeLog::All() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return {requests_.begin(), requests_.end()};
}

std::vector<ReceivedRequest> ExchangeLog::Of(std::uint8_t command) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<ReceivedRequest> found;
  std::copy_if(requests_.begin(), requests_.end(), std::back_inserter(found),
               [command](const ReceivedRequest& request) { return request.command == command; });
  return found;
}

std::size_t ExchangeLog::Count() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return total_;
}

bool ExchangeLog::WaitFor(std::uint8_t command, std::size_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return added_.wait_for(lock, timeout, [&] { return CountLocked(command) >= count; });
}

std::size_t ExchangeLog::CountLocked(std::uint8_t command) const {
  return static_cast<std::size_t>(
      std::count_if(requests_.begin(), requests_.end(),
                    [command](const ReceivedRequest& request) { return request.command == command; }));
}

}  // namespace varkel::sim
