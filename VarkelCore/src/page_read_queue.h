#pragma once

#include <functional>
#include <mutex>
#include <optional>

#include "VarkelCore/src/worker_threads.h"

namespace varkel {

/// Reads pages on a worker, one at a time. While one is read the next request waits; a newer one replaces it,
/// since the user has moved on. Requests come from one thread; the functions run on the worker.
class PageReadQueue {
 public:
  using PageFunction = std::function<void(int module)>;

  PageReadQueue(WorkerThreads& workers, PageFunction read, PageFunction finished);

  void Request(int module);
  bool is_reading() const;

 private:
  void Work(const std::stop_token& stop, int module);

  WorkerThreads& workers_;
  const PageFunction read_;
  const PageFunction finished_;
  mutable std::mutex mutex_;  // guards what follows
  bool reading_ = false;
  std::optional<int> next_;
};

}  // namespace varkel
