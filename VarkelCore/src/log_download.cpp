#include "VarkelCore/src/log_download.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QThread>
#include <cstdint>
#include <exception>
#include <utility>

#include "VarkelCore/src/ktc_connect.h"
#include "VarkelCore/src/named_command.h"
#include "VarkelCore/src/whole_file.h"

namespace varkel {

namespace {

constexpr int kTarTimeMs = 30000;
constexpr int kRemovalAttempts = 20;
constexpr unsigned long kRemovalPauseMs = 25;

struct OperationLogPart {
  const char* prefix;
  std::uint8_t selector[2];
};

constexpr OperationLogPart kOperationLogParts[] = {
    {"bsw_warning_", {0x00, 0x00}},
    {"asw_warning_", {0x00, 0x01}},
    {"bsw_error_", {0x01, 0x00}},
    {"asw_error_", {0x01, 0x01}},
};

/// The archive's own name is kept; what tar writes stands beside it until it is whole.
constexpr char kUnfinished[] = ".part";

bool Pack(const QString& folder, const QStringList& files, const QString& archive) {
  const QString unfinished = archive + QLatin1String(kUnfinished);
  QProcess tar;
  tar.setWorkingDirectory(folder);  // the process's own working directory stays
  tar.setStandardOutputFile(QProcess::nullDevice());
  tar.start(QStringLiteral("tar"), QStringList{QStringLiteral("-cvf"), unfinished} + files);
  const bool packed =
      tar.waitForFinished(kTarTimeMs) && tar.exitStatus() == QProcess::NormalExit && tar.exitCode() == 0;
  if (packed && MoveOver(unfinished, archive)) return true;
  tar.kill();
  tar.waitForFinished();
  QFile::remove(unfinished);
  return false;
}

/// On Windows a folder stays in use for a moment when the program that worked in it has ended.
void RemoveFolder(QDir& folder) {
  for (int attempt = 1; !folder.removeRecursively() && attempt < kRemovalAttempts; ++attempt) {
    QThread::msleep(kRemovalPauseMs);
  }
}

}  // namespace

void LogDownload::DownloadLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                              const QString& folder, const QString& type) const {
  set_running_(true);
  const std::string name = type.toStdString();
  try {
    FetchLog(catalogue, client, folder, name);
  } catch (const std::exception& error) {
    Fail(name + " download error: " + error.what());
  }
}

void LogDownload::FetchLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                           const QString& folder, const std::string& type) const {
  const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
  const QString target = folder + QLatin1Char('/') + FileNamePart(QString::fromStdString(type)) +
                         QLatin1Char('_') + stamp + QStringLiteral(".bin");
  const VarInfo* var = catalogue.FindByName(type);
  if (var == nullptr) return Fail("Can not find " + type + " name");
  if (ActionCommandText(*var).empty()) return Fail("Can not find " + type + " command");

  const ActionRequest request = MakeActionRequest(*var);
  std::vector<std::uint8_t> log;
  if (const auto failure = QueryTableCommand(client, request.command, request.payload, log)) {
    return Fail(type + " download failed. return code: " + std::to_string(*failure));
  }
  switch (WriteWholeFile(target, ReplyContent(request.command, log))) {
    case WriteResult::kNotOpened:
      return Fail(type + ": Failed to open file.");
    case WriteResult::kNotWritten:
      return Fail(type + ": Failed to write binary data to file.");
    case WriteResult::kWritten:
      set_running_(false);
      report_.Success(type + " download successful.");
  }
}

bool LogDownload::DownloadOperationLog(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                       const QString& archive) const {
  set_running_(true);
  const VarInfo* var = FindNamed(catalogue, {"Operation Log", "operation log"});
  if (var == nullptr) {
    Fail("Can not find Operation Log name");
    return false;
  }
  if (ActionCommandText(*var).empty()) {
    Fail("Can not find Operation Log command");
    return false;
  }
  if (QStandardPaths::findExecutable(QStringLiteral("tar")).isEmpty()) {
    report_.Log("The operation log was not asked for: there is no program \"tar\" here that could pack it.",
                "ERROR");
    Fail("Operation log download failed.");
    return false;
  }
  try {
    const bool whole = FetchOperationLog(
        *var, client, archive.endsWith(QStringLiteral(".tar")) ? archive : archive + QStringLiteral(".tar"));
    set_running_(false);
    if (whole) {
      report_.Success("Operation log download successful.");
    } else {
      report_.Error("Operation log download failed.");
    }
    return whole;
  } catch (const std::exception& error) {
    Fail("Operation Log download error: " + std::string(error.what()));
    return false;
  }
}

bool LogDownload::FetchOperationLog(const VarInfo& var, quarn::lidar::KtcClient& client,
                                    const QString& archive) const {
  const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy_MM_dd_hh_mm_ss"));
  QDir folder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
              QStringLiteral("/operation_log"));
  folder.mkpath(QStringLiteral("."));

  QStringList files;
  bool whole = true;
  for (const OperationLogPart& part : kOperationLogParts) {
    const ActionRequest request = MakeActionRequest(var, {part.selector[0], part.selector[1]});
    std::vector<std::uint8_t> log;
    whole &= !QueryTableCommand(client, request.command, request.payload, log);
    const QString file = QLatin1String(part.prefix) + stamp + QStringLiteral(".bin");
    whole &=
        WriteWholeFile(folder.filePath(file), ReplyContent(request.command, log)) == WriteResult::kWritten;
    files.append(file);
  }
  // A set of parts that is not whole is never packed: an archive would be taken for a complete one.
  if (!whole || !Pack(folder.path(), files, archive)) return false;
  RemoveFolder(folder);
  return true;
}

void LogDownload::Fail(const std::string& text) const {
  set_running_(false);
  report_.Error(text);
}

}  // namespace varkel
