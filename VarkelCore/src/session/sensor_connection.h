#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>

#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/session/session_makers.h"

namespace varkel {

/// The tool's connection: none, one that is being made, or a session. Thread-safe.
class SensorConnection {
 public:
  /// Makes a session or says why it can't; a stop ends it at once.
  using Maker = std::function<SessionResult(const std::stop_token&)>;
  /// What an attempt came to. Called on its thread, after is_connecting has fallen.
  struct Outcome {
    std::function<void()> connected;
    std::function<void(const ConnectFailure&)> failed;
  };

  SensorConnection() = default;
  ~SensorConnection() { End(); }
  SensorConnection(const SensorConnection&) = delete;
  SensorConnection& operator=(const SensorConnection&) = delete;

  /// One attempt from beginning to end, on the calling worker's thread. An earlier attempt or session is
  /// ended first. When the attempt itself is ended, or `stop` is requested, nothing is reported.
  void Connect(const std::stop_token& stop, const Maker& make, const Outcome& outcome);

  /// Leaves neither a session nor an attempt. Whoever waits for the sensor returns at once; after this call
  /// no round of the session's periodic thread runs.
  void End();

  /// The session for the length of an operation; null without one.
  std::shared_ptr<SensorSession> session() const;
  bool is_connecting() const;

 private:
  using Attempt = std::shared_ptr<std::stop_source>;

  std::shared_ptr<SensorSession> Take(const Attempt& next);
  bool Publish(const Attempt& attempt, const SessionResult& made);

  std::mutex making_mutex_;   // held while a session is made: two attempts must not open the same port
  mutable std::mutex mutex_;  // guards what follows
  Attempt attempt_;           ///< stops the attempt that is under way; null without one
  std::shared_ptr<SensorSession> session_;
};

}  // namespace varkel
