#pragma once

#include <QString>
#include <functional>
#include <stop_token>
#include <string>
#include <utility>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

class OperationLogFiles;

/// Downloads logs from the sensor into files, on the calling thread. Every outcome is reported after the
/// running flag has been cleared. A file appears under its name only once it is complete.
class LogDownload {
 public:
  LogDownload(UserReport& report, std::function<void(bool running)> set_running)
      : report_(report), set_running_(std::move(set_running)) {}

  /// Downloads the log of the variable named `type` to `folder`/TYPE_yyyyMMdd-hhmmss.bin (local time).
  void DownloadLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, const QString& folder,
                   const QString& type) const;

  /// Downloads the four parts of the operation log and packs them with the external program "tar" into
  /// `archive` (".tar" is appended if missing). The parts are collected in the user's documents folder +
  /// "/operation_log". On success they are removed, together with the folder if it is then empty; on failure
  /// they are kept. True on success. A stop ends tar at once; the code that requests it also interrupts the
  /// client.
  bool DownloadOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                            const QString& archive, const std::stop_token& stop) const;

 private:
  // These return the text of the error notice, empty on success.
  std::string FetchLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, const QString& folder,
                       const std::string& type) const;
  std::string FetchOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                const QString& archive, const std::stop_token& stop) const;

  bool FetchParts(const VarInfo& var, quarn::lidar::KtcClient& client, const OperationLogFiles& files,
                  const std::stop_token& stop) const;
  bool Finish(const std::string& fault, const std::string& success) const;
  /// Notices only say that a query failed; this logs the code that the sensor or the client gave.
  void LogCode(const std::string& log, int code) const;

  UserReport& report_;
  const std::function<void(bool running)> set_running_;
};

}  // namespace varkel
