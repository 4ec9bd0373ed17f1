#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "simulator/src/serial_request.h"

namespace varkel::sim {

/// The valid request frames that a small sensor received, oldest first; the newest kCapacity are kept.
/// Thread-safe.
class SerialLog {
 public:
  static constexpr std::size_t kCapacity = 4096;
  using Condition = std::function<bool(const SerialRequest&)>;

  void Add(SerialRequest request);
  void Clear();
  std::vector<SerialRequest> All() const;

  /// Waits until `count` of the kept requests meet the condition. False on time-out.
  bool WaitFor(const Condition& condition, std::size_t count, std::chrono::milliseconds timeout) const;

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable added_;
  std::deque<SerialRequest> requests_;  // guarded by mutex_
};

}  // namespace varkel::sim
