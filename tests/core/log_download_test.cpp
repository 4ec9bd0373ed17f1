#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "tests/core/core_test.h"

namespace {

class LogDownloadTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    folder_ = std::make_unique<QTemporaryDir>();
    bench_ = std::make_unique<Bench>();
    QVERIFY(bench_->ConnectOn());
  }

  void NamedLogIsAFile() {
    VarkelManager& manager = *bench_->manager;
    QSignalSpy finished(&manager, &VarkelManager::downloadFinished);
    QSignalSpy running(&manager, &VarkelManager::isDownloadLogChanged);
    bench_->Misbehave("0x62=late:500");
    QCOMPARE(manager.DownloadLog(Target(), "Event Log"), 0);
    QVERIFY(manager.IsDownloadLog());
    const int beside[] = {manager.DownloadLog(Target(), "Event Log"),
                          manager.DownloadOperationLog(Target("logs")), manager.Restart(), manager.Reset()};
    for (const int result : beside) QCOMPARE(result, -1);  // nothing else runs then
    QCOMPARE(bench_->NextSuccess(), "Event Log download successful.");
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(running.count(), 2);
    QVERIFY(!manager.IsDownloadLog() && bench_->errors.isEmpty());
    QCOMPARE(Files().size(), 1);
    QVERIFY(QRegExp("Event Log_\\d{8}-\\d{6}\\.bin").exactMatch(Files().first()));
    QFile log(folder_->filePath(Files().first()));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QByteArray content = log.readAll();
    QVERIFY(content.size() > 1024);
    QVERIFY2(content.at(0) >= ' ', "the log begins with the code that its reply repeats");
  }

  void NamedLogFailures() {
    const QStringList cases[] = {{"Other Log", "", "Can not find Other Log name"},
                                 {"Fault Log", "missing/folder", "Fault Log: Failed to open file."}};
    for (const QStringList& texts : cases) {
      QCOMPARE(bench_->manager->DownloadLog(Target(texts[1]), texts[0]), 0);
      QCOMPARE(bench_->NextError(), texts[2]);
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
    }
    QCOMPARE(Files().size(), 3);
    QCOMPARE(QDir::currentPath(), directory);
    QVERIFY(
        !QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)).exists("operation_log"));

    QProcess tar;
    tar.start("tar", {"-tf", folder_->filePath("logs.tar")});
    QVERIFY(tar.waitForFinished());
    const QStringList parts =
        QString::fromLocal8Bit(tar.readAll()).remove('\r').split('\n', Qt::SkipEmptyParts);
    const auto requests = bench_->sensor->Received(0x61);
    QCOMPARE(parts.size(), 4);
    QCOMPARE(requests.size(), 12U);
    const char* const prefixes[] = {"bsw_warning_", "asw_warning_", "bsw_error_", "asw_error_"};
    for (std::uint8_t i = 0; i < 4; ++i) {
      QVERIFY(QRegExp(prefixes[i] + QString("\\d{4}(_\\d\\d){5}\\.bin")).exactMatch(parts[i]));
      QCOMPARE(requests[i].payload, (std::vector<std::uint8_t>{i >= 2, i % 2 == 1}));
    }
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
