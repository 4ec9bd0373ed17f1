#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// Work that the window starts and is notified about when it ends. Used from the thread that owns the queue.
class BackgroundWork {
 public:
  /// `running_changed` is called whenever a piece of work begins or ends.
  BackgroundWork(WorkerThreads& workers, EventQueue& events, std::function<void()> running_changed);

  /// Runs `work` on a worker. `finished` follows on the queue's thread and takes what `work` returned; it
  /// takes nothing if that is void.
  template <typename Work, typename Finished>
  void Start(Work work, Finished finished) {
    using Result = std::invoke_result_t<const Work&>;
    if constexpr (std::is_void_v<Result>) {
      Run(std::move(work), std::move(finished));
    } else {
      const auto result = std::make_shared<std::optional<Result>>();
      Run([result, work = std::move(work)] { result->emplace(work()); },
          [result, finished = std::move(finished)] { finished(std::move(**result)); });
    }
  }
  /// Runs `work`, whose end needs no answer.
  void Start(std::function<void()> work) {
    Run(std::move(work), [] {});
  }

  bool is_running() const { return running_ > 0; }

 private:
  void Run(std::function<void()> work, std::function<void()> finished);

  WorkerThreads& workers_;
  EventQueue& events_;
  const std::function<void()> running_changed_;
  int running_ = 0;  ///< used on the queue's thread only
};

}  // namespace varkel
