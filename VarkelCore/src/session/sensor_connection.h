#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>

#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/session/session_makers.h"

namespace varkel {

/// The tool's connection: none, one being established, or a session. Thread-safe.
class SensorConnection {
 public:
  /// Makes a session or returns why it can't; a stop ends it at once.
  using Maker = std::function<SessionResult(const std::stop_token&)>;
  /// Callbacks for the outcome of an attempt. Called on its thread, after is_connecting has become false.
  struct Outcome {
    std::function<void()> connected;
    std::function<void(const ConnectFailure&)> failed;
  };

  SensorConnection() = default;
  ~SensorConnection() { End(); }
  SensorConnection(const SensorConnection&) = delete;
  SensorConnection& operator=(const SensorConnection&) = delete;

  /// Runs one attempt on the calling worker's thread. Any earlier attempt or session is ended first. If this
  /// attempt is ended in turn, or `stop` is requested, nothing is reported.
  void Connect(const std::stop_token& stop, const Maker& make, const Outcome& outcome);

  /// Ends the session or the attempt. Calls waiting for the sensor return at once; after this call the
  /// session's periodic thread no longer runs.
  void End();

  /// The session, to be held for the length of an operation; null if there is none.
  std::shared_ptr<SensorSession> session() const;
  bool is_connecting() const;

 private:
  using Attempt = std::shared_ptr<std::stop_source>;

  std::shared_ptr<SensorSession> Take(const Attempt& next);
  bool Publish(const Attempt& attempt, const SessionResult& made);

  std::mutex making_mutex_;   // held while a session is made: two attempts must not open the same port
  mutable std::mutex mutex_;  // guards what follows
  Attempt attempt_;           ///< stops the attempt that is under way; null if there is none
  std::shared_ptr<SensorSession> session_;
};

}  // namespace varkel
