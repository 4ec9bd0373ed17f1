#pragma once

#include <QObject>
#include <QString>
#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/session_makers.h"
#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "VarkelCore/src/upgrade/sensor_identity.h"

namespace varkel {

/// Waits for a network sensor that restarts after an upgrade and reconnects it once it is back. If another
/// sensor answers at its address, the wait ends without a connection. Lives on the queue's thread, which
/// makes all calls.
class SensorReturn : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isWaiting READ is_waiting NOTIFY changed)
  /// Progress or outcome, for the upgrade's page; empty before the first wait and after one that the user
  /// ended.
  Q_PROPERTY(QString text READ text NOTIFY changed)

 public:
  struct Times {
    std::chrono::milliseconds limit = std::chrono::minutes(2);
    std::chrono::milliseconds leaving = std::chrono::seconds(2);  ///< until the old firmware has stopped
    std::chrono::milliseconds pause = std::chrono::seconds(1);    ///< between two attempts
  };
  using Catalogue = std::shared_ptr<const ConfigParser>;

  /// `connect` connects with the current settings. Everything outlives this object, and `workers` is joined
  /// before it is destroyed.
  SensorReturn(WorkerThreads& workers, EventQueue& events, SessionContext context,
               std::function<void()> connect, Times times);

  /// Waits for the sensor that was connected with these settings; `before` is its identity before the
  /// upgrade.
  void Await(const ConnectionSettings& settings, const Catalogue& catalogue, const SensorIdentity& before);
  /// The user moves on: no more attempts and no more reports.
  void Cancel();

  bool is_waiting() const { return wait_ != nullptr; }
  const QString& text() const { return text_; }

 signals:
  void changed();
  /// The wait ended without Cancel. `back`: the sensor is being connected.
  void ended(const QString& text, bool back);

 private:
  using Wait = std::shared_ptr<std::stop_source>;
  struct Outcome {
    std::string text;
    bool back = false;
  };

  Outcome Look(const std::stop_token& stop, const ConnectionSettings& settings, const Catalogue& catalogue,
               const SensorIdentity& before) const;
  SensorIdentity Visit(const std::stop_token& stop, const ConnectionSettings& settings,
                       const Catalogue& catalogue) const;
  void End(const Wait& wait, const Outcome& outcome);

  WorkerThreads& workers_;
  EventQueue& events_;
  const SessionContext context_;
  const std::function<void()> connect_;
  const Times times_;
  Wait wait_;  ///< stops the current wait; null without one
  QString text_;
};

}  // namespace varkel
