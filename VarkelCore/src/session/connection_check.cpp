#include "VarkelCore/src/session/connection_check.h"

#include <utility>

namespace varkel {

ConnectionCheck::ConnectionCheck(const SensorConnection& connection, WorkerThreads& workers,
                                 EventQueue& events, std::function<void(bool)> finished)
    : connection_(connection), workers_(workers), events_(events), finished_(std::move(finished)) {}

bool ConnectionCheck::SensorAnswers() const {
  const auto session = connection_.session();
  return session && session->Answers();
}

void ConnectionCheck::Start() {
  if (std::exchange(is_running_, true)) return;
  workers_.Start([this](const std::stop_token&) {
    const bool answers = SensorAnswers();
    events_.Post([this, answers] {
      is_running_ = false;
      finished_(answers);
    });
  });
}

}  // namespace varkel
