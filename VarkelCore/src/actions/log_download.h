#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// Fetches logs from the sensor into files. Works on the calling thread; every outcome is reported, and the
/// running flag is lowered before it is. A file appears under its name only when it is whole.
class LogDownload {
 public:
  LogDownload(UserReport& report, std::function<void(bool running)> set_running)
      : report_(report), set_running_(std::move(set_running)) {}

  /// One named log, to `folder`/TYPE_yyyyMMdd-hhmmss.bin.
  void DownloadLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, const QString& folder,
                   const QString& type) const;

  /// The four parts of the operation log, packed by the external program "tar" into `archive` (".tar" is
  /// added when missing). The parts are gathered in the user's documents folder + "/operation_log", which is
  /// removed after success and kept after a failure. True on success.
  bool DownloadOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                            const QString& archive) const;

 private:
  void FetchLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, const QString& folder,
                const std::string& type) const;
  bool FetchOperationLog(const VarInfo& var, quarn::lidar::KtcClient& client, const QString& archive) const;
  void Fail(const std::string& text) const;

  UserReport& report_;
  const std::function<void(bool running)> set_running_;
};

}  // namespace varkel
