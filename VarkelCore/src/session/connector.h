#pragma once

#include <functional>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// Starts connection attempts, each on a worker, and reports their outcome.
class Connector {
 public:
  /// The periodic work of sessions with the two kinds of sensors.
  struct Rounds {
    SensorSession::Periodic pages;
    SensorSession::Periodic small_sensor_info;
  };
  /// Called on the worker after the log line that announces a connection.
  struct Events {
    std::function<void()> network_sensor_connected;
    std::function<void()> small_sensor_connected;
  };

  /// All arguments outlive this object, and `workers` is joined before it is destroyed.
  Connector(SensorConnection& connection, WorkerThreads& workers, SessionContext context, Rounds rounds,
            Events events);

  /// Starts an attempt for the connection type (one of ConnectType); false while one is running, or for any
  /// other number.
  bool Start(int connect_type, const ConnectionSettings& settings);

 private:
  void Attempt(const SensorConnection::Maker& make, const std::function<void()>& connected);

  SensorConnection& connection_;
  WorkerThreads& workers_;
  const SessionContext context_;
  const Rounds rounds_;
  const Events events_;
};

}  // namespace varkel
