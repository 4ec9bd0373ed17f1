#include <sys/stat.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "tests/core/core_test.h"
#ifndef _WIN32
#include "tests/support/full_disk.h"
#endif
#include "tests/support/qt_files.h"

namespace {

constexpr char kOldArchive[] = "an older archive";
constexpr int kDisk = 8192;
constexpr char kFailed[] = "Operation log download failed.";
constexpr char kDownloaded[] = "Operation log download successful.";

QStringList Packed(const QString& archive) {
  QProcess tar;
  tar.start("tar", {"-tf", archive});
  if (!tar.waitForFinished()) return {"tar hangs"};
  return QString::fromLocal8Bit(tar.readAll()).remove('\r').split('\n', Qt::SkipEmptyParts);
}

class LogDownloadTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    folder_ =
        std::make_unique<QTemporaryDir>(QDir::current().filePath("log-XXXXXX"));  // on the tables' own drive
    parts_.removeRecursively();                                                   // from an earlier run
    fixture_ = std::make_unique<ControllerFixture>();
    QVERIFY(fixture_->ConnectOn());
  }
  void cleanup() { qputenv("PATH", search_path_); }

  void NamedLogIsAFile() {
    VarkelManager& manager = *fixture_->manager;
    QSignalSpy finished(&manager, &VarkelManager::downloadFinished);
    fixture_->AddFault("0x62=late:500");
    QCOMPARE(manager.DownloadLog(Target(), "Event Log"), 0);
    QVERIFY(manager.IsDownloadLog());
    const int beside[] = {manager.DownloadLog(Target(), "Event Log"),
                          manager.DownloadOperationLog(Target("logs")), manager.Restart(), manager.Reset()};
    for (const int result : beside) QCOMPARE(result, -1);  // refused while a download is running
    QCOMPARE(fixture_->NextSuccess(), "Event Log download successful.");
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(!manager.IsDownloadLog() && fixture_->errors.isEmpty());
    const QStringList files = Files(folder_->path());
    QVERIFY2(QRegExp("Event Log_[0-9]{8}-[0-9]{6}\\.bin").exactMatch(files.join('|')), qPrintable(files[0]));
    const QByteArray content = Content(folder_->filePath(files.first()));
    QVERIFY(content.size() > 1024);
    QVERIFY2(content.at(0) >= ' ', "the log begins with the code that its reply repeats");
  }

  void NamedLogFailures() {
    fixture_->AddFault("0x62=error:5");
    const QStringList cases[] = {{"Other Log", "", "Can not find Other Log name"},
                                 {"Event Log", "missing/folder", "Event Log: Failed to open file."},
                                 {"Fault Log", "", "Fault Log download failed. return code: -1"}};
    for (const QStringList& texts : cases) {
      QCOMPARE(fixture_->manager->DownloadLog(Target(texts[1]), texts[0]), 0);
      QCOMPARE(fixture_->NextError(), texts[2]);
      QTRY_VERIFY(!fixture_->manager->IsDownloadLog());
      QVERIFY(Files(folder_->path()).isEmpty());
    }
    QVERIFY(fixture_->log.contains("ERROR Fault Log: the query failed with code 5."));
  }

  // The name comes from the table, yet the file must be in the chosen folder and nowhere else.
  void NamedLogStaysInItsFolder() {
    QVERIFY(QDir(folder_->path()).mkpath("a/b"));
    Put(folder_->filePath("table.csv"), Content("Config/varID/Quenta.csv").replace("Fault Log", "../../Log"));
    const QString model = QDir("Config/varID").relativeFilePath(folder_->filePath("table"));
    fixture_->manager->InitConfigFileParser(model);
    QCOMPARE(fixture_->manager->DownloadLog(Target("a/b"), "../../Log"), 0);
    QCOMPARE(fixture_->NextSuccess(), "../../Log download successful.");
    QVERIFY(Files(folder_->filePath("a/b")).join('|').startsWith("_._.._Log_"));
  }

  void OperationLogIsAnArchiveOfFourParts() {
    const QString directory = QDir::currentPath();
    QSignalSpy finished(fixture_->manager.get(), &VarkelManager::downloadOperationLogFinished);
    const std::pair<const char*, const char*> cases[] = {
        {"logs", "logs.tar"}, {"other.tar", "other.tar"}, {"logs.TAR", "logs.TAR.tar"}};
    for (const auto& [chosen, archive] : cases) {
      QCOMPARE(fixture_->manager->DownloadOperationLog(Target(chosen)), 0);
      QCOMPARE(fixture_->NextSuccess(), kDownloaded);
      QTRY_COMPARE(finished.count(), 1);
      QCOMPARE(finished.takeFirst().first().toBool(), true);
      QVERIFY2(Files(folder_->path()).contains(archive), archive);
    }
    QCOMPARE(Files(folder_->path()).size(), 3);
    QCOMPARE(QDir::currentPath(), directory);
    QVERIFY(!parts_.exists());

    const QStringList parts = Packed(folder_->filePath("logs.tar"));
    const auto requests = fixture_->sensor->Received(0x61);
    QCOMPARE(parts.size(), 4);
    QCOMPARE(requests.size(), 12U);
    const char* const prefixes[] = {"bsw_warning_", "asw_warning_", "bsw_error_", "asw_error_"};
    for (std::uint8_t i = 0; i < 4; ++i) {
      QVERIFY2(QRegExp(prefixes[i] + QString("[0-9]{4}(_[0-9]{2}){5}\\.bin")).exactMatch(parts[i]),
               qPrintable(parts[i]));
      QCOMPARE(requests[i].payload, (std::vector<std::uint8_t>{i >= 2, i % 2 == 1}));
    }
  }

  // Files of the user, of another download, and the archive itself.
  void OtherFilesOfTheWorkFolderStay() {
    QVERIFY(parts_.mkpath("."));
    QStringList names{"logs.tar", "notes.txt"};
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 20; ++second) {
      names.append("asw_error_" + QLocale::c().toString(now.addSecs(second), "yyyy_MM_dd_hh_mm_ss") + ".bin");
    }
    for (const QString& name : names) Put(parts_.filePath(name), kOldArchive);
    fixture_->manager->DownloadOperationLog(QUrl::fromLocalFile(parts_.filePath("logs.tar")));
    QCOMPARE(fixture_->NextSuccess(), kDownloaded);
    names.sort();
    QCOMPARE(Files(parts_.path()), names);
    QCOMPARE(Packed(parts_.filePath("logs.tar")).size(), 4);
    for (const QString& name : names.mid(0, 20)) {
      QCOMPARE(Content(parts_.filePath(name)), QByteArray(kOldArchive));
    }
  }

  // A shell script replaces tar and a full disk is simulated where that is possible.
  void FailureKeepsTheOldArchive_data() {
    // `tar`: a script that replaces the program; "-" means there is no tar. `disk`: the maximum size of a
    // file.
    const Table<QString, int, QString, QString, QString, int> row("tar", "disk", "rule", "name", "error",
                                                                  "parts");
    const char* const no_tar =
        "The operation log can't be packed: the program \"tar\" was not found. Install it, or add its folder "
        "to "
        "PATH.";
    row("no tar", "-", 0, "", "logs.tar", no_tar, 0);
    row("a part is missing", "", 0, "0x61=error#2", "logs.tar", kFailed, 3);
#ifndef _WIN32
    row("no file", "", 0, "", "pipe.tar", kFailed, 0);
    row("tar dies", "echo half > \"$2\"; kill -9 $$", 0, "", "logs.tar", kFailed, 4);
    row("no room for the archive", "", kDisk, "", "logs.tar", kFailed, 4);
    row("no room for the parts", "", 64, "", "logs.tar", kFailed, 0);
#endif
  }
  void FailureKeepsTheOldArchive() {
    QFETCH(QString, tar);
    QFETCH(int, disk);
    QFETCH(QString, rule);
    QFETCH(QString, name);
    QFETCH(QString, error);
    QFETCH(int, parts);
    const QString path = folder_->filePath("logs.tar");
    Put(path, kOldArchive);
    MakePipe();
    const QStringList before = Files(folder_->path());
    if (!rule.isEmpty()) fixture_->AddFault(rule.toStdString());
    if (!tar.isEmpty()) ReplaceTar(tar);
    auto full = MakeDiskFull(disk);
    fixture_->manager->DownloadOperationLog(Target(name));
    const QString reported = fixture_->NextError();
    full.reset();
    cleanup();
    QCOMPARE(reported, error);
    QVERIFY(!fixture_->manager->IsDownloadLog());
    QCOMPARE(Content(path), QByteArray(kOldArchive));
    QCOMPARE(Files(folder_->path()), before);
    QCOMPARE(Files(parts_.path()).size(), parts);  // the parts that arrived are kept for inspection
    const bool is_futile = tar == "-" || name == "pipe.tar";
    QCOMPARE(fixture_->sensor->Received(0x61).empty(), is_futile);
    QCOMPARE(fixture_->manager->DownloadOperationLog(QUrl::fromLocalFile(path)), 0);
    QCOMPARE(fixture_->NextSuccess(), kDownloaded);
    QVERIFY(Content(path).size() > kDisk);  // replaced the old one
  }

#ifndef _WIN32
  void ClosingEndsTar() {
    const QString started = folder_->filePath("started");
    ReplaceTar("touch " + started + "; touch \"$2\"; exec sleep 20");
    fixture_->manager->DownloadOperationLog(Target("logs.tar"));
    QTRY_VERIFY(QFile::exists(started));
    QElapsedTimer closing;
    closing.start();
    fixture_.reset();
    QVERIFY2(closing.elapsed() < 1000, qPrintable(QString::number(closing.elapsed())));
    QCOMPARE(Files(folder_->path()), QStringList{"started"});
  }
#endif

 private:
  QUrl Target(const QString& name = {}) const {
    return QUrl::fromLocalFile(folder_->filePath(name));
  }

  void ReplaceTar(const QString& script) {
    Put(programs_.filePath("tar"), "#!/bin/sh\nPATH=" + search_path_ + "\n" + script.toUtf8());
    QFile::setPermissions(programs_.filePath("tar"),
                          script == "-" ? QFile::ReadOwner : QFile::ReadOwner | QFile::ExeOwner);
    qputenv("PATH", programs_.path().toUtf8());
  }

#ifdef _WIN32
  void MakePipe() const {}
  std::unique_ptr<int> MakeDiskFull(int /*bytes*/) const {
    return nullptr;
  }
#else
  void MakePipe() const {
    mkfifo(folder_->filePath("pipe.tar").toUtf8(), 0600);
  }
  std::unique_ptr<FullDisk> MakeDiskFull(int bytes) const {
    return bytes > 0 ? std::make_unique<FullDisk>(bytes) : nullptr;
  }
#endif

  const QByteArray search_path_ = qgetenv("PATH");
  const QTemporaryDir programs_;
  QDir parts_{QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/operation_log"};
  std::unique_ptr<QTemporaryDir> folder_;
  std::unique_ptr<ControllerFixture> fixture_;
};

const RegisterTest<LogDownloadTest> register_log_download_test;

}  // namespace

#include "log_download_test.moc"
