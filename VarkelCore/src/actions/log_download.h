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

/// Downloads logs from the sensor into files. Works on the calling thread; every outcome is reported, after
/// the running flag has been cleared. A file appears under its name only when it is complete.
class LogDownload {
 public:
  LogDownload(UserReport& report, std::function<void(bool running)> set_running)
      : report_(report), set_running_(std::move(set_running)) {}

  /// The log of the variable named `type`, to `folder`/TYPE_yyyyMMdd-hhmmss.bin (local time).
  void DownloadLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, const QString& folder,
                   const QString& type) const;

  /// The four parts of the operation log, packed by the external program "tar" into `archive` (".tar" is
  /// appended if missing). The parts are gathered in the user's documents folder + "/operation_log"; they are
  /// removed after success, with the folder if it is empty then, and kept after a failure. True on success.
  /// A stop ends tar at once; whoever asks for it interrupts the client as well.
  bool DownloadOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                            const QString& archive, const std::stop_token& stop) const;

 private:
  // These return the error notice, empty on success.
  std::string FetchLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client, const QString& folder,
                       const std::string& type) const;
  std::string FetchOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                const QString& archive, const std::stop_token& stop) const;

  bool FetchParts(const VarInfo& var, quarn::lidar::KtcClient& client, const OperationLogFiles& files,
                  const std::stop_token& stop) const;
  bool Finish(const std::string& fault, const std::string& success) const;
  /// The notices say no more than that a query failed; the code that the sensor or the client gave is in the
  /// log.
  void LogCode(const std::string& log, int code) const;

  UserReport& report_;
  const std::function<void(bool running)> set_running_;
};

}  // namespace varkel
