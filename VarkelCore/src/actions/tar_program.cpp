#include "VarkelCore/src/actions/tar_program.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {

constexpr int kTimeoutMs = 30000;
constexpr int kPollMs = 50;  ///< how late a stop may be noticed
constexpr int kKillTimeoutMs = 500;

/// Whether the process ended by itself in time.
bool WaitForEnd(QProcess& process, const std::stop_token& stop) {
  QElapsedTimer timer;
  timer.start();
  while (process.state() != QProcess::NotRunning && !stop.stop_requested() && !timer.hasExpired(kTimeoutMs)) {
    process.waitForFinished(kPollMs);
  }
  if (process.state() == QProcess::NotRunning) return true;
  process.kill();
  process.waitForFinished(kKillTimeoutMs);
  return false;
}

std::string Pack(QProcess& process, const std::stop_token& stop) {
  if (!process.waitForStarted()) return "tar can't be started: " + process.errorString().toStdString() + '.';
  if (!WaitForEnd(process, stop)) return "tar was stopped before it had packed the files.";
  if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0) return {};
  return "tar failed: " + QString::fromLocal8Bit(process.readAllStandardError()).trimmed().toStdString();
}

}  // namespace

QString FindTar() {
  return QStandardPaths::findExecutable(QStringLiteral("tar"));
}

std::string RunTar(const QString& tar, const QString& folder, const QStringList& files,
                   const QString& archive, const QString& tag, const std::stop_token& stop) {
  const QString unfinished = archive + QLatin1Char('.') + tag + QStringLiteral(".part");
  QProcess process;
  process.setWorkingDirectory(folder);  // this program's own does not change
  process.setStandardOutputFile(QProcess::nullDevice());
  process.start(tar, QStringList{QStringLiteral("-cvf"), unfinished} + files);
  std::string fault = Pack(process, stop);
  if (fault.empty() && !ReplaceFile(unfinished, archive)) {
    fault = archive.toStdString() + " can't be replaced.";
  }
  if (!fault.empty()) QFile::remove(unfinished);
  return fault;
}

}  // namespace varkel
