#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "tests/core/core_test.h"

namespace {

QString WorkFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/operation_log";
}

/// Runs with another PATH, so that another "tar" is found, or none.
class PathGuard {
 public:
  explicit PathGuard(const QByteArray& path) : before_(qgetenv("PATH")) { qputenv("PATH", path); }
  ~PathGuard() { qputenv("PATH", before_); }
  PathGuard(const PathGuard&) = delete;
  PathGuard& operator=(const PathGuard&) = delete;

 private:
  const QByteArray before_;
};

class LogDownloadTest : public QObject {
  Q_OBJECT
 private slots:
  void init();
  void cleanup();
  void NamedLogIsAFile();
  void NamedLogFailures_data();
  void NamedLogFailures();
  void OperationLogIsAnArchiveOfFourParts_data();
  void OperationLogIsAnArchiveOfFourParts();
  void OperationLogFailures_data();
  void OperationLogFailures();
  void NothingElseRunsBeside();

 private:
  QUrl Target(const QString& name = {}) const { return QUrl::fromLocalFile(folder_->filePath(name)); }
  QStringList Files() const { return QDir(folder_->path()).entryList(QDir::Files | QDir::Hidden); }

  std::unique_ptr<QTemporaryDir> folder_;
  std::unique_ptr<Bench> bench_;
};

void LogDownloadTest::init() {
  folder_ = std::make_unique<QTemporaryDir>();
  bench_ = std::make_unique<Bench>();
  bench_->manager->setModuleIndexUse(-1);
  QVERIFY(bench_->Connect());
}

void LogDownloadTest::cleanup() {
  bench_.reset();
  QDir(WorkFolder()).removeRecursively();
}

void LogDownloadTest::NamedLogIsAFile() {
  QSignalSpy finished(bench_->manager.get(), &VarkelManager::downloadFinished);
  QSignalSpy running(bench_->manager.get(), &VarkelManager::isDownloadLogChanged);
  QCOMPARE(bench_->manager->DownloadLog(Target(), "Event Log"), 0);
  QVERIFY(bench_->manager->IsDownloadLog());
  QCOMPARE(bench_->manager->DownloadLog(Target(), "Event Log"), -1);  // one at a time
  QCOMPARE(bench_->NextSuccess(), QString("Event Log download successful."));
  QTRY_COMPARE(finished.count(), 1);
  QCOMPARE(running.count(), 2);
  QVERIFY(!bench_->manager->IsDownloadLog());
  QCOMPARE(Files().size(), 1);
  QVERIFY(QRegExp("Event Log_\\d{8}-\\d{6}\\.bin").exactMatch(Files().first()));
  QFile log(folder_->filePath(Files().first()));
  QVERIFY(log.open(QIODevice::ReadOnly));
  const QByteArray content = log.readAll();
  QVERIFY(content.size() > 1024);
  QVERIFY2(content.at(0) >= ' ', "the log begins with the code that its reply repeats");
}

void LogDownloadTest::NamedLogFailures_data() {
  QTest::addColumn<QString>("misbehaviour");
  QTest::addColumn<QString>("type");
  QTest::addColumn<QString>("sub_folder");
  QTest::addColumn<QString>("error");
  QTest::newRow("refused") << "0x62=error:6"
                           << "Fault Log"
                           << ""
                           << "Fault Log download failed. return code: 6";
  QTest::newRow("breaks off") << "0x62=close"
                              << "Fault Log"
                              << ""
                              << "Fault Log download failed. return code: -3";
  QTest::newRow("no such log") << ""
                               << "Other Log"
                               << ""
                               << "Can not find Other Log name";
  QTest::newRow("no such folder") << ""
                                  << "Fault Log"
                                  << "missing/folder"
                                  << "Fault Log: Failed to open file.";
}

void LogDownloadTest::NamedLogFailures() {
  QFETCH(QString, misbehaviour);
  QFETCH(QString, type);
  QFETCH(QString, sub_folder);
  if (!misbehaviour.isEmpty()) bench_->sensor->Misbehave(misbehaviour.toStdString());
  QCOMPARE(bench_->manager->DownloadLog(Target(sub_folder), type), 0);
  QTEST(bench_->NextError(), "error");
  QVERIFY(!bench_->manager->IsDownloadLog());
  QVERIFY(Files().isEmpty());
}

void LogDownloadTest::OperationLogIsAnArchiveOfFourParts_data() {
  QTest::addColumn<QString>("chosen");
  QTest::addColumn<QString>("archive");
  QTest::newRow("ending added") << "logs"
                                << "logs.tar";
  QTest::newRow("ending given") << "logs.tar"
                                << "logs.tar";
  QTest::newRow("another case is no ending") << "logs.TAR"
                                             << "logs.TAR.tar";
}

void LogDownloadTest::OperationLogIsAnArchiveOfFourParts() {
  QFETCH(QString, chosen);
  const QString directory = QDir::currentPath();
  QSignalSpy finished(bench_->manager.get(), &VarkelManager::downloadOperationLogFinished);
  QCOMPARE(bench_->manager->DownloadOperationLog(Target(chosen)), 0);
  QCOMPARE(bench_->NextSuccess(), QString("Operation log download successful."));
  QTRY_COMPARE(finished.count(), 1);
  QCOMPARE(finished.first().first().toBool(), true);
  QCOMPARE(QDir::currentPath(), directory);
  QVERIFY(!QDir(WorkFolder()).exists());
  QFETCH(QString, archive);
  QCOMPARE(Files(), QStringList{archive});

  QProcess tar;
  tar.start("tar", {"-tf", folder_->filePath(archive)});
  QVERIFY(tar.waitForFinished());
  const QStringList parts = QString::fromLocal8Bit(tar.readAll()).split('\n', Qt::SkipEmptyParts);
  QCOMPARE(parts.size(), 4);
  const char* const prefixes[] = {"bsw_warning_", "asw_warning_", "bsw_error_", "asw_error_"};
  const std::uint8_t selectors[][2] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};
  const auto requests = bench_->sensor->Received(0x61);
  QCOMPARE(requests.size(), std::size_t{4});
  for (int i = 0; i < 4; ++i) {
    const auto n = static_cast<std::size_t>(i);
    QVERIFY(QRegExp(prefixes[n] + QString("\\d{4}(_\\d\\d){5}\\.bin")).exactMatch(parts[i]));
    QCOMPARE(requests[n].payload, (std::vector<std::uint8_t>{selectors[n][0], selectors[n][1]}));
  }
}

void LogDownloadTest::OperationLogFailures_data() {
  QTest::addColumn<QString>("misbehaviour");
  QTest::addColumn<QString>("tar");  // a shell script in place of the program; "-": none at all
  QTest::addColumn<QString>("name");
  QTest::newRow("third part refused") << "0x61=error:1#3"
                                      << ""
                                      << "logs.tar";
  QTest::newRow("last part breaks off") << "0x61=close#4"
                                        << ""
                                        << "logs.tar";
  QTest::newRow("no tar") << ""
                          << "-"
                          << "logs.tar";
  QTest::newRow("tar fails after writing half") << ""
                                                << "echo half > \"$2\"; exit 2"
                                                << "logs.tar";
  QTest::newRow("no such folder") << ""
                                  << ""
                                  << "missing/logs.tar";
}

void LogDownloadTest::OperationLogFailures() {
  QFETCH(QString, misbehaviour);
  QFETCH(QString, tar);
  QFETCH(QString, name);
  if (!misbehaviour.isEmpty()) bench_->sensor->Misbehave(misbehaviour.toStdString());
  const QTemporaryDir programs;
  std::unique_ptr<PathGuard> path;
  if (!tar.isEmpty()) {
    if (tar != "-") {
      QFile script(programs.filePath("tar"));
      QVERIFY(script.open(QIODevice::WriteOnly));
      script.write("#!/bin/sh\n" + tar.toUtf8() + "\n");
      script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    path = std::make_unique<PathGuard>(programs.path().toLocal8Bit());
  }
  QSignalSpy finished(bench_->manager.get(), &VarkelManager::downloadOperationLogFinished);
  QCOMPARE(bench_->manager->DownloadOperationLog(Target(name)), 0);
  QCOMPARE(bench_->NextError(), QString("Operation log download failed."));
  QTRY_COMPARE(finished.count(), 1);
  QCOMPARE(finished.first().first().toBool(), false);
  QVERIFY(!bench_->manager->IsDownloadLog());
  QVERIFY(Files().isEmpty());
  QCOMPARE(QDir(WorkFolder()).entryList(QDir::Files).size(), 4);  // what came stays for a look
}

void LogDownloadTest::NothingElseRunsBeside() {
  bench_->sensor->Misbehave("0x62=late:1000");
  QCOMPARE(bench_->manager->DownloadLog(Target(), "Fault Log"), 0);
  QCOMPARE(bench_->manager->Restart(), -1);
  QCOMPARE(bench_->manager->Reset(), -1);
  QCOMPARE(bench_->manager->DownloadOperationLog(Target("logs")), -1);
  QCOMPARE(bench_->NextSuccess(), QString("Fault Log download successful."));
  QVERIFY(bench_->errors.isEmpty());
}

const RegisterTest<LogDownloadTest> registered;

}  // namespace

#include "log_download_test.moc"
