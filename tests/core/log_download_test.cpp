#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "tests/core/core_test.h"

namespace {

QString WorkFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/operation_log";
}

class LogDownloadTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    folder_ = std::make_unique<QTemporaryDir>();
    bench_ = std::make_unique<Bench>();
    QVERIFY(bench_->ConnectOn());
  }
  void cleanup() {
    bench_.reset();
    QDir(WorkFolder()).removeRecursively();
  }

  void NamedLogIsAFile() {
    QSignalSpy finished(bench_->manager.get(), &VarkelManager::downloadFinished);
    QSignalSpy running(bench_->manager.get(), &VarkelManager::isDownloadLogChanged);
    bench_->sensor->Misbehave("0x62=late:500");
    QCOMPARE(bench_->manager->DownloadLog(Target(), "Event Log"), 0);
    QVERIFY(bench_->manager->IsDownloadLog());
    QCOMPARE(bench_->manager->DownloadLog(Target(), "Event Log"), -1);  // nothing else runs beside it
    QCOMPARE(bench_->manager->DownloadOperationLog(Target("logs")), -1);
    QCOMPARE(bench_->manager->Restart(), -1);
    QCOMPARE(bench_->manager->Reset(), -1);
    QCOMPARE(bench_->NextSuccess(), "Event Log download successful.");
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(running.count(), 2);
    QVERIFY(!bench_->manager->IsDownloadLog() && bench_->errors.isEmpty());
    QCOMPARE(Files().size(), 1);
    QVERIFY(QRegExp("Event Log_\\d{8}-\\d{6}\\.bin").exactMatch(Files().first()));
    QFile log(folder_->filePath(Files().first()));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QByteArray content = log.readAll();
    QVERIFY(content.size() > 1024);
    QVERIFY2(content.at(0) >= ' ', "the log begins with the code that its reply repeats");
  }

  void NamedLogFailures() {
    const QStringList cases[] = {
        {"0x62=error:6", "Fault Log", "", "Fault Log download failed. return code: 6"},
        {"0x07=error:1", "Other Log", "", "Can not find Other Log name"},
        {"0x07=error:1", "Fault Log", "missing/folder", "Fault Log: Failed to open file."},
        {"0x62=close", "Fault Log", "", "Fault Log download failed. return code: -3"}};
    for (const QStringList& texts : cases) {
      bench_->sensor->Behave();
      bench_->sensor->Misbehave(texts[0].toStdString());
      QCOMPARE(bench_->manager->DownloadLog(Target(texts[2]), texts[1]), 0);
      QCOMPARE(bench_->NextError(), texts[3]);
      QTRY_VERIFY(!bench_->manager->IsDownloadLog());
      QVERIFY(Files().isEmpty());
    }
  }

  void OperationLogIsAnArchiveOfFourParts() {
    const QString directory = QDir::currentPath();
    QSignalSpy finished(bench_->manager.get(), &VarkelManager::downloadOperationLogFinished);
    const std::pair<const char*, const char*> cases[] = {
        {"logs", "logs.tar"}, {"other.tar", "other.tar"}, {"logs.TAR", "logs.TAR.tar"}};
    for (const auto& [chosen, archive] : cases) {
      QCOMPARE(bench_->manager->DownloadOperationLog(Target(chosen)), 0);
      QCOMPARE(bench_->NextSuccess(), "Operation log download successful.");
      QTRY_COMPARE(finished.count(), 1);
      QCOMPARE(finished.takeFirst().first().toBool(), true);
      QVERIFY2(Files().contains(archive), archive);
      QVERIFY(!QDir(WorkFolder()).exists());
    }
    QCOMPARE(Files().size(), 3);
    QCOMPARE(QDir::currentPath(), directory);

    QProcess tar;
    tar.start("tar", {"-tf", folder_->filePath("logs.tar")});
    QVERIFY(tar.waitForFinished());
    const QStringList parts = QString::fromLocal8Bit(tar.readAll()).split('\n', Qt::SkipEmptyParts);
    const auto requests = bench_->sensor->Received(0x61);
    QCOMPARE(parts.size(), 4);
    QCOMPARE(requests.size(), 12U);
    const char* const prefixes[] = {"bsw_warning_", "asw_warning_", "bsw_error_", "asw_error_"};
    for (std::uint8_t i = 0; i < 4; ++i) {
      QVERIFY(QRegExp(prefixes[i] + QString("\\d{4}(_\\d\\d){5}\\.bin")).exactMatch(parts[i]));
      QCOMPARE(requests[i].payload, (std::vector<std::uint8_t>{i >= 2, i % 2 == 1}));
    }
  }

  void OperationLogFailures_data() {
    // "tar" is a shell script in place of the program; "-": there is none.
    const Table<QString, QString, QString> row("misbehaviour", "tar", "name");
    row("third part refused", "0x61=error:1#3", "", "logs.tar");
    row("last part breaks off", "0x61=close#4", "", "logs.tar");
    row("no tar", "", "-", "logs.tar");
    row("tar fails after writing half", "", "echo half > \"$2\"; exit 2", "logs.tar");
    row("no such folder", "", "", "missing/logs.tar");
  }
  void OperationLogFailures() {
    QFETCH(QString, misbehaviour);
    QFETCH(QString, tar);
    QFETCH(QString, name);
    if (!misbehaviour.isEmpty()) bench_->sensor->Misbehave(misbehaviour.toStdString());
    const QTemporaryDir programs;
    const auto restore_path = qScopeGuard([path = qgetenv("PATH")] { qputenv("PATH", path); });
    if (!tar.isEmpty()) qputenv("PATH", programs.path().toLocal8Bit());
    if (tar.size() > 1) {
      QFile script(programs.filePath("tar"));
      QVERIFY(script.open(QIODevice::WriteOnly));
      script.write("#!/bin/sh\n" + tar.toUtf8() + "\n");
      script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    QSignalSpy finished(bench_->manager.get(), &VarkelManager::downloadOperationLogFinished);
    QCOMPARE(bench_->manager->DownloadOperationLog(Target(name)), 0);
    QCOMPARE(bench_->NextError(), "Operation log download failed.");
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toBool(), false);
    QVERIFY(!bench_->manager->IsDownloadLog());
    QVERIFY(Files().isEmpty());
    QCOMPARE(QDir(WorkFolder()).entryList(QDir::Files).size(), 4);  // what came stays for a look
  }

 private:
  QUrl Target(const QString& name = {}) const { return QUrl::fromLocalFile(folder_->filePath(name)); }
  QStringList Files() const { return QDir(folder_->path()).entryList(QDir::Files | QDir::Hidden); }

  std::unique_ptr<QTemporaryDir> folder_;
  std::unique_ptr<Bench> bench_;
};

const RegisterTest<LogDownloadTest> registered;

}  // namespace

#include "log_download_test.moc"
