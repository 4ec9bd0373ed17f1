#include "VarkelCore/src/session/sensor_connection.h"

#include <utility>

namespace varkel {

void SensorConnection::Connect(const std::stop_token& stop, const Maker& make, const Outcome& outcome) {
  const auto attempt = std::make_shared<std::stop_source>();
  if (const auto earlier = Take(attempt)) earlier->End();
  const std::stop_callback forward(stop, [attempt] { attempt->request_stop(); });
  SessionResult made;
  {
    const std::lock_guard one_at_a_time(making_mutex_);
    if (!attempt->stop_requested()) made = make(attempt->get_token());
    if (!Publish(attempt, made)) {
      if (made && *made) (*made)->End();
      return;
    }
  }
  if (made) {
    outcome.connected();
  } else {
    outcome.failed(made.error());
  }
}

void SensorConnection::End() {
  if (const auto leaving = Take(nullptr)) leaving->End();
}

std::shared_ptr<SensorSession> SensorConnection::session() const {
  const std::lock_guard lock(mutex_);
  return session_;
}

bool SensorConnection::is_connecting() const {
  const std::lock_guard lock(mutex_);
  return attempt_ != nullptr;
}

/// Requests the running attempt to stop, replaces it by `next`, and takes out the session.
std::shared_ptr<SensorSession> SensorConnection::Take(const Attempt& next) {
  Attempt earlier;
  std::shared_ptr<SensorSession> leaving;
  {
    const std::lock_guard lock(mutex_);
    earlier = std::exchange(attempt_, next);
    leaving = std::exchange(session_, nullptr);
  }
  if (earlier) earlier->request_stop();
  return leaving;
}

/// Completes the attempt with its result; false if it has already been ended.
bool SensorConnection::Publish(const Attempt& attempt, const SessionResult& made) {
  const std::lock_guard lock(mutex_);
  const bool counts = attempt_ == attempt && !attempt->stop_requested();
  if (attempt_ == attempt) attempt_ = nullptr;
  if (counts && made) session_ = *made;
  return counts;
}

}  // namespace varkel
