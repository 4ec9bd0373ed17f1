#include "VarkelCore/src/tasks/background_work.h"

#include <utility>

namespace varkel {

BackgroundWork::BackgroundWork(WorkerThreads& workers, EventQueue& events,
                               std::function<void()> running_changed)
    : workers_(workers), events_(events), running_changed_(std::move(running_changed)) {}

void BackgroundWork::Run(std::function<void()> work, std::function<void()> finished) {
  ++running_;
  running_changed_();
  workers_.Start([this, work = std::move(work), finished = std::move(finished)](const std::stop_token&) {
    work();
    events_.Post([this, finished] {
      --running_;
      running_changed_();
      finished();
    });
  });
}

}  // namespace varkel
