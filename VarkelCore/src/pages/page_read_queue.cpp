#include "VarkelCore/src/pages/page_read_queue.h"

#include <utility>

namespace varkel {

PageReadQueue::PageReadQueue(WorkerThreads& workers, ReadFunction read, PageFunction finished)
    : workers_(workers), read_(std::move(read)), finished_(std::move(finished)) {}

void PageReadQueue::Request(int module) {
  {
    const std::lock_guard lock(mutex_);
    if (reading_) {
      next_ = module;
      return;
    }
    reading_ = true;
  }
  workers_.Start([this, module](const std::stop_token& stop) { Work(stop, module); });
}

bool PageReadQueue::is_reading() const {
  const std::lock_guard lock(mutex_);
  return reading_;
}

bool PageReadQueue::HasNext() const {
  const std::lock_guard lock(mutex_);
  return next_.has_value();
}

void PageReadQueue::Work(const std::stop_token& stop, int module) {
  for (;;) {
    if (!stop.stop_requested()) read_(module, [this] { return HasNext(); });
    std::optional<int> next;
    {
      const std::lock_guard lock(mutex_);
      next = std::exchange(next_, std::nullopt);
      reading_ = next.has_value();
    }
    finished_(module);
    if (!next) return;
    module = *next;
  }
}

}  // namespace varkel
