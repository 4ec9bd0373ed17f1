#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <stop_token>

#include "VarkelCore/src/actions/log_download.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// Starts log downloads, one at a time, from the sensor that is connected at the start. Used from one thread.
class LogDownloads {
 public:
  using Catalogue = std::shared_ptr<const ConfigParser>;
  /// Called on the download's thread.
  struct Events {
    std::function<void()> finished;
    std::function<void(bool complete)> operation_log_finished;
  };

  /// All arguments outlive this object, and `workers` is joined before it is destroyed.
  LogDownloads(const SensorConnection& connection, Activity& activity, WorkerThreads& workers,
               UserReport& report, Events events);

  // 0 if the download was started on a worker, -1 without an open KTC client or during an upgrade or a
  // download.

  int StartLog(const Catalogue& catalogue, const QString& folder, const QString& type);
  int StartOperationLog(const Catalogue& catalogue, const QString& archive);

  /// Downloads the operation log on the calling thread: 0, or -1 without an open KTC client.
  int DownloadOperationLog(const Catalogue& catalogue, const QString& archive);

 private:
  using Session = std::shared_ptr<SensorSession>;
  using Work = std::function<void(const Session&, const std::stop_token&)>;

  int Start(const Catalogue& catalogue, Work work);
  void Fetch(const Session& session, const ConfigParser& catalogue, const QString& archive,
             const std::stop_token& stop) const;

  const SensorConnection& connection_;
  Activity& activity_;
  WorkerThreads& workers_;
  const LogDownload download_;
  const Events events_;
};

}  // namespace varkel
