#include "VarkelCore/src/actions/log_download.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <exception>

#include "VarkelCore/src/actions/operation_log_files.h"
#include "VarkelCore/src/actions/tar_program.h"
#include "VarkelCore/src/catalogue/named_command.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {

constexpr char kOperationLogFailed[] = "Operation log download failed.";

QString WithTarExtension(const QString& archive) {
  const QString extension = QStringLiteral(".tar");
  return QFileInfo(archive.endsWith(extension) ? archive : archive + extension).absoluteFilePath();
}

}  // namespace

void LogDownload::DownloadLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                              const QString& folder, const QString& type) const {
  set_running_(true);
  const std::string name = type.toStdString();
  std::string fault;
  try {
    fault = FetchLog(catalogue, client, folder, name);
  } catch (const std::exception& error) {
    fault = name + " download error: " + error.what();
  }
  Finish(fault, name + " download successful.");
}

std::string LogDownload::FetchLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                  const QString& folder, const std::string& type) const {
  const QString stamp =
      QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("yyyyMMdd-hhmmss"));
  const QString target = folder + QLatin1Char('/') + SanitizedFileName(QString::fromStdString(type)) +
                         QLatin1Char('_') + stamp + QStringLiteral(".bin");
  const VarInfo* var = catalogue.FindByName(type);
  if (var == nullptr) return "Can not find " + type + " name";
  if (ActionCommandText(*var).empty()) return "Can not find " + type + " command";

  const ActionRequest request = MakeActionRequest(*var);
  const ExchangeResult log = QueryTableCommand(client, request.command, request.payload);
  if (!log) {
    LogCode(type, log.error());
    return type + " download failed. return code: -1";
  }
  switch (WriteAtomically(target, ReplyContent(request.command, *log))) {
    case WriteResult::kNotOpened:
      return type + ": Failed to open file.";
    case WriteResult::kNotWritten:
      return type + ": Failed to write binary data to file.";
    case WriteResult::kWritten:
      break;
  }
  return {};
}

bool LogDownload::DownloadOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                       const QString& archive, const std::stop_token& stop) const {
  set_running_(true);
  std::string fault;
  try {
    fault = FetchOperationLog(catalogue, client, WithTarExtension(archive), stop);
  } catch (const std::exception& error) {
    fault = "Operation Log download error: " + std::string(error.what());
  }
  return Finish(fault, "Operation log download successful.");
}

std::string LogDownload::FetchOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                           const QString& archive, const std::stop_token& stop) const {
  const VarInfo* var = FindNamed(catalogue, {"Operation Log", "operation log"});
  if (var == nullptr) return "Can not find Operation Log name";
  if (ActionCommandText(*var).empty()) return "Can not find Operation Log command";
  // Obstacles to packing are found before anything is downloaded.
  const QString tar = FindTar();
  if (tar.isEmpty()) {
    return "The operation log can't be packed: the program \"tar\" was not found. Install it, or add its "
           "folder to "
           "PATH.";
  }
  if (!IsWritableTarget(archive)) {
    report_.Log(archive.toStdString() + " is not a regular file.", "ERROR");
    return kOperationLogFailed;
  }

  const OperationLogFiles files(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                                QStringLiteral("/operation_log"));
  if (!files.are_created()) {
    report_.Log("No files can be created in " + files.folder().toStdString() + '.', "ERROR");
    return kOperationLogFailed;
  }
  // An incomplete set of parts is not packed: the archive could be mistaken for a complete one.
  if (!FetchParts(*var, client, files, stop)) return kOperationLogFailed;
  const std::string fault = RunTar(tar, files.folder(), files.names(), archive, files.stamp(), stop);
  if (!fault.empty()) {
    report_.Log("The parts of the operation log are kept in " + files.folder().toStdString() + ": " + fault,
                "ERROR");
    return kOperationLogFailed;
  }
  files.Remove();
  return {};
}

// Continues after a part that could not be read: the other parts may help the user.
bool LogDownload::FetchParts(const VarInfo& var, quarn::lidar::KtcClient& client,
                             const OperationLogFiles& files, const std::stop_token& stop) const {
  bool complete = true;
  for (std::size_t i = 0; i < kOperationLogParts.size() && !stop.stop_requested(); ++i) {
    const auto& selector = kOperationLogParts[i].selector;
    const ActionRequest request = MakeActionRequest(var, {selector[0], selector[1]});
    const ExchangeResult log = QueryTableCommand(client, request.command, request.payload);
    if (!log) LogCode("Operation log part " + std::to_string(i + 1), log.error());
    complete &= log && files.Write(i, ReplyContent(request.command, *log));
  }
  return complete && !stop.stop_requested();
}

bool LogDownload::Finish(const std::string& fault, const std::string& success) const {
  set_running_(false);
  fault.empty() ? report_.Success(success) : report_.Error(fault);
  return fault.empty();
}

void LogDownload::LogCode(const std::string& log, int code) const {
  report_.Log(log + ": the query failed with code " + std::to_string(code) + '.', "ERROR");
}

}  // namespace varkel
