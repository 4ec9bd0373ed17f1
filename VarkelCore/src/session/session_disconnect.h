#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/tasks/event_queue.h"

namespace varkel {

/// Disconnects the tool from a sensor that an operation has restarted. Thread-safe.
class SessionDisconnect {
 public:
  /// `disconnect` ends the tool's connection; it is called on the queue's thread. All arguments outlive this
  /// object.
  SessionDisconnect(const SensorConnection& connection, EventQueue& events, std::function<void()> disconnect)
      : connection_(connection), events_(events), disconnect_(std::move(disconnect)) {}

  /// Disconnects on the queue's thread and then calls `after`; does neither if the tool has left this session
  /// by then.
  void Leave(
      const std::shared_ptr<SensorSession>& session, const std::function<void()>& after = [] {}) const {
    events_.Post([this, session, after] {
      if (connection_.session() != session) return;
      disconnect_();
      after();
    });
  }

 private:
  const SensorConnection& connection_;
  EventQueue& events_;
  const std::function<void()> disconnect_;
};

}  // namespace varkel
