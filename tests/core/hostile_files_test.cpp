#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <utility>

#include "VarkelCore/src/connection_settings.h"
#include "VarkelCore/src/whole_file.h"
#include "tests/core/core_test.h"

using Make = std::function<void(const QByteArray& path)>;
using Write = std::function<bool(const QString& path)>;  // false when it could not
Q_DECLARE_METATYPE(Make)
Q_DECLARE_METATYPE(Write)

namespace {

constexpr int kLimit = 4096;
constexpr std::size_t kTooMuch = std::size_t{3} * kLimit;
constexpr char kOld[] = "[General]\nudp_port=2400\n";

/// Writing a file beyond `bytes` fails while it lives, as on a full disk. So does the output of this program.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes, void (*action)(int) = SIG_IGN) : action_(std::signal(SIGXFSZ, action)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, action_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  void (*const action_)(int);
  rlimit before_{};
};

void Put(const QString& path, const QByteArray& content) {
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write(content);
}

QByteArray Content(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

class HostileFilesTest : public QObject {
  Q_OBJECT
 private slots:
  void SettingsThatAreNone_data();
  void SettingsThatAreNone();
  void UserHearsOfSettingsThatAreNone();
  void OldContentOutlivesTheWriter_data();
  void OldContentOutlivesTheWriter();
  void OldArchiveOutlivesAFailure_data();
  void OldArchiveOutlivesAFailure();
  void NamesStayInTheFolder_data();
  void NamesStayInTheFolder();
};

void HostileFilesTest::SettingsThatAreNone_data() {
  QTest::addColumn<Make>("make");
  QTest::addColumn<QString>("why");
  QTest::newRow("directory") << Make([](const QByteArray& path) { mkdir(path, 0700); }) << "no regular file";
  QTest::newRow("link to itself") << Make([](const QByteArray& path) { QCOMPARE(symlink(path, path), 0); })
                                  << "no regular file";
  QTest::newRow("pipe that nobody fills")
      << Make([](const QByteArray& path) { mkfifo(path, 0600); }) << "no regular file";
  QTest::newRow("100 MB") << Make([](const QByteArray& path) {
    Put(path, kOld);
    QVERIFY(QFile::resize(path, 100'000'000));
  }) << "it has 100000000 bytes";
  if (geteuid() == 0) return;  // who may read everything
  QTest::newRow("not readable") << Make([](const QByteArray& path) {
    Put(path, kOld);
    chmod(path, 0);
  }) << "Permission denied";
}

void HostileFilesTest::SettingsThatAreNone() {
  QFETCH(Make, make);
  QFETCH(QString, why);
  const QTemporaryDir folder;
  const QString path = folder.filePath("settings.ini");
  make(path.toUtf8());
  QElapsedTimer clock;
  clock.start();
  std::string fault;
  const varkel::SettingsFile file(path);
  const varkel::ConnectionSettings settings = file.Load(&fault);
  QCOMPARE(settings.ip_address, std::string("192.168.1.201"));
  QCOMPARE(int{settings.udp_port}, 2368);
  QVERIFY2(fault.find(why.toStdString()) != std::string::npos, fault.c_str());
  fault = file.Save(settings);
  QVERIFY2(fault.find(why.toStdString()) != std::string::npos, fault.c_str());
  QVERIFY(clock.elapsed() < 1000);
  QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size(), 1);
}

void HostileFilesTest::UserHearsOfSettingsThatAreNone() {
  const QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                       "/VelmoraDataFiles/RecvSettings.ini";
  QFile::remove(path);
  QVERIFY(QDir().mkpath(path));
  Bench bench;
  QTRY_VERIFY(bench.log.contains("WARNING The defaults stand in for the settings of " + path +
                                 ": it is no regular file."));
  QVERIFY(bench.Connect());
  QVERIFY(bench.log.contains("WARNING The connection settings can't be saved to " + path +
                             ": it is no regular file."));
  QVERIFY(QDir().rmdir(path));
}

void HostileFilesTest::OldContentOutlivesTheWriter_data() {
  QTest::addColumn<Write>("write");
  QTest::newRow("settings") << Write([](const QString& path) {
    return varkel::SettingsFile(path).Save({.ip_address = std::string(kTooMuch, '1')}).empty();
  });
  QTest::newRow("bytes from the sensor") << Write([](const QString& path) {
    return varkel::WriteWholeFile(path, std::vector<std::uint8_t>(kTooMuch)) == varkel::WriteResult::kWritten;
  });
}

void HostileFilesTest::OldContentOutlivesTheWriter() {
  QFETCH(Write, write);
  const QTemporaryDir folder;
  const QString path = folder.filePath("file");
  Put(path, kOld);
  auto full = std::make_unique<FullDisk>(kLimit);
  const bool written = write(path);
  full.reset();
  QVERIFY(!written);
  QCOMPARE(Content(path), QByteArray(kOld));
  QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"file"});

  const pid_t writer = fork();
  if (writer == 0) {  // dies in the middle of a write
    const rlimit no_dump{};
    setrlimit(RLIMIT_CORE, &no_dump);
    const FullDisk deadly(kLimit, SIG_DFL);
    write(path);
    _exit(0);
  }
  int status = 0;
  QCOMPARE(waitpid(writer, &status, 0), writer);
  QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
  QCOMPARE(Content(path), QByteArray(kOld));
  QVERIFY(write(path));  // what the dead writer left behind is in nobody's way
  QVERIFY(std::cmp_greater_equal(Content(path).size(), kTooMuch));
}

void HostileFilesTest::OldArchiveOutlivesAFailure_data() {
  QTest::addColumn<QByteArray>("tar");  // a script in place of the program
  QTest::addColumn<int>("disk");        // bytes that a file may have, 0 for any number
  QTest::newRow("tar dies half-way") << QByteArray("echo half > \"$2\"; kill -9 $$") << 0;
  QTest::newRow("no room for the archive") << QByteArray() << 2 * kLimit;
  QTest::newRow("no room for the parts") << QByteArray() << 64;
}

void HostileFilesTest::OldArchiveOutlivesAFailure() {
  QFETCH(QByteArray, tar);
  QFETCH(int, disk);
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  const QTemporaryDir folder;
  const QString path = folder.filePath("logs.tar");
  const QByteArray programs = qgetenv("PATH");
  Put(path, kOld);
  if (!tar.isEmpty()) {
    Put(folder.filePath("tar"), "#!/bin/sh\n" + tar);
    QFile::setPermissions(folder.filePath("tar"), QFile::ReadOwner | QFile::ExeOwner);
    qputenv("PATH", folder.path().toUtf8() + ':' + programs);
  }
  auto full = disk > 0 ? std::make_unique<FullDisk>(disk) : nullptr;
  bench.manager->DownloadOperationLog(QUrl::fromLocalFile(path));
  const QString error = bench.NextError();
  full.reset();
  qputenv("PATH", programs);
  QCOMPARE(error, QString("Operation log download failed."));
  QFile::remove(folder.filePath("tar"));
  QCOMPARE(Content(path), QByteArray(kOld));
  QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"logs.tar"});
  QCOMPARE(bench.manager->DownloadOperationLog(QUrl::fromLocalFile(path)), 0);
  QCOMPARE(bench.NextSuccess(), QString("Operation log download successful."));
  QVERIFY(Content(path).size() > 2 * kLimit);  // in place of the old one
}

void HostileFilesTest::NamesStayInTheFolder_data() {
  QTest::addColumn<QString>("name");
  QTest::addColumn<QString>("part");
  const auto row = [](const char* name, const char* part) {
    QTest::newRow(name) << QString::fromUtf8(name) << QString::fromUtf8(part);
  };
  row("Event Log", "Event Log");
  row("../../up Log", "_._.._up Log");
  row("/etc/passwd Log", "_etc_passwd Log");
  row("C:\\Windows Log", "C__Windows Log");
  row("\\\\host\\share Log", "__host_share Log");
  row("a*?\"<>| Log", "a______ Log");
  row(".hidden Log", "_hidden Log");
  row("gnp\xE2\x80\xAE.exe\n\x1B Log", "gnp_.exe__ Log");
  const QString letters = QString::fromUtf8("é😀");  // 2 and 4 bytes
  QTest::newRow("over-long") << letters.repeated(100) << letters.repeated(30);
}

// The name comes from the table, the file from the sensor: it is found in the folder, and nowhere else.
void HostileFilesTest::NamesStayInTheFolder() {
  QFETCH(QString, name);
  QFETCH(QString, part);
  QCOMPARE(varkel::FileNamePart(name), part);
  const QTemporaryDir folder;
  QVERIFY(QDir(folder.path()).mkpath("a/b"));
  QByteArray table = Content("Config/varID/Quenta.csv");
  table.replace("Fault Log", '"' + name.toUtf8().replace('"', "\"\"") + '"');
  Put(folder.filePath("table.csv"), table);
  Bench bench;
  QVERIFY(bench.Connect());
  bench.manager->InitConfigFileParser(QDir("Config/varID").relativeFilePath(folder.filePath("table")));
  QCOMPARE(bench.manager->DownloadLog(QUrl::fromLocalFile(folder.filePath("a/b")), name), 0);
  QCOMPARE(bench.NextSuccess(), name + " download successful.");
  const QStringList files = QDir(folder.filePath("a/b")).entryList(QDir::Files | QDir::Hidden);
  QCOMPARE(files.size(), 1);
  QVERIFY2(files.first().startsWith(part + '_'), qPrintable(files.first()));
}

const RegisterTest<HostileFilesTest> registered;

}  // namespace

#include "hostile_files_test.moc"
