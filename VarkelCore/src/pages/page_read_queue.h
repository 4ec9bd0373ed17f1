#pragma once

#include <functional>
#include <mutex>
#include <optional>

#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// Reads pages on a worker, one at a time. While a page is being read, the next request waits; a newer
/// request replaces it, since the user has moved on. Requests come from one thread; the functions run on the
/// worker.
class PageReadQueue {
 public:
  /// Reads a page; may return early once `replaced` returns true, since another page is waiting.
  using ReadFunction = std::function<void(int module, const std::function<bool()>& replaced)>;
  using PageFunction = std::function<void(int module)>;

  PageReadQueue(WorkerThreads& workers, ReadFunction read, PageFunction finished);

  void Request(int module);
  bool is_reading() const;

 private:
  bool HasNext() const;
  void Work(const std::stop_token& stop, int module);

  WorkerThreads& workers_;
  const ReadFunction read_;
  const PageFunction finished_;
  mutable std::mutex mutex_;  // guards what follows
  bool reading_ = false;
  std::optional<int> next_;
};

}  // namespace varkel
