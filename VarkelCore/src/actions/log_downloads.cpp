#include "VarkelCore/src/actions/log_downloads.h"

#include <utility>

namespace varkel {

LogDownloads::LogDownloads(const SensorConnection& connection, Activity& activity, WorkerThreads& workers,
                           UserReport& report, Events events)
    : connection_(connection),
      activity_(activity),
      workers_(workers),
      download_(report, [&activity](bool running) { activity.SetDownloading(running); }),
      events_(std::move(events)) {}

int LogDownloads::StartLog(const Catalogue& catalogue, const QString& folder, const QString& type) {
  return Start(catalogue, [this, catalogue, folder, type](const Session& session, const std::stop_token&) {
    download_.DownloadLog(*catalogue, *session->ktc_client(), folder, type);
    events_.finished();
  });
}

int LogDownloads::StartOperationLog(const Catalogue& catalogue, const QString& archive) {
  return Start(catalogue, [this, catalogue, archive](const Session& session, const std::stop_token& stop) {
    Fetch(session, *catalogue, archive, stop);
  });
}

int LogDownloads::DownloadOperationLog(const Catalogue& catalogue, const QString& archive) {
  const auto session = connection_.session();
  if (!session || !session->is_ktc_open() || !catalogue) return -1;
  Fetch(session, *catalogue, archive, {});
  return 0;
}

int LogDownloads::Start(const Catalogue& catalogue, Work work) {
  auto session = connection_.session();
  if (!session || !session->is_ktc_open() || !session->is_idle() || !catalogue) return -1;
  activity_.SetDownloading(true);  // at once, so that a second click is refused
  workers_.Start([session = std::move(session), work = std::move(work)](const std::stop_token& stop) {
    work(session, stop);
  });
  return 0;
}

void LogDownloads::Fetch(const Session& session, const ConfigParser& catalogue, const QString& archive,
                         const std::stop_token& stop) const {
  events_.operation_log_finished(
      download_.DownloadOperationLog(catalogue, *session->ktc_client(), archive, stop));
}

}  // namespace varkel
