#include <sys/stat.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <utility>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/tasks/atomic_file.h"
#include "tests/core/core_test.h"
#include "tests/support/full_disk.h"
#include "tests/support/qt_files.h"

namespace {

constexpr int kLimit = 4096;
constexpr std::size_t kTooMuch = std::size_t{3} * kLimit;
constexpr char kOldSettings[] = "[General]\nudp_port=2400\n";

using Write = std::function<bool(const QString& path)>;

bool WriteSettings(const QString& path) {
  return varkel::SettingsFile(path).Save({.ip_address = std::string(kTooMuch, '1')}).empty();
}
bool WriteBytes(const QString& path) {
  return varkel::WriteAtomically(path, std::vector<std::uint8_t>(kTooMuch)) == varkel::WriteResult::kWritten;
}

class HostileFilesTest : public QObject {
  Q_OBJECT
 private slots:
  void OnlyRegularFilesAreReadOrWritten() {
    const struct {
      std::function<void(const QByteArray& path)> make;
      const char* why;
    } cases[] = {{[](const auto& path) { mkdir(path, 0700); }, "not a regular file"},
                 {[](const auto& path) { QCOMPARE(symlink(path, path), 0); }, "not a regular file"},
                 {[](const auto& path) { mkfifo(path, 0600); }, "not a regular file"},  // nobody fills it
                 {[](const auto& path) {
                    Put(path, kOldSettings);
                    QFile::resize(path, 100'000'000);
                  },
                  "100000000 bytes"},
                 {[](const auto& path) {
                    Put(path, kOldSettings);
                    chmod(path, 0);
                  },
                  "Permission denied"}};
    for (const auto& [make, why] : cases) {
      if (geteuid() == 0 && *why == 'P') continue;  // root may read everything
      const QTemporaryDir folder;
      const QString path = folder.filePath("file");
      make(path.toUtf8());
      const auto mode = [&] {
        struct stat status {};
        return lstat(path.toUtf8(), &status) == 0 ? status.st_mode : 0;
      };
      const auto before = mode();
      QElapsedTimer clock;
      clock.start();
      std::string fault;
      const varkel::SettingsFile file(path);
      const varkel::ConnectionSettings settings = file.Load(&fault);
      QCOMPARE(settings.ip_address, std::string("192.168.1.201"));
      QVERIFY2(fault.find(why) != std::string::npos, fault.c_str());
      fault = file.Save(settings);
      QVERIFY2(fault.find(why) != std::string::npos, fault.c_str());
      if (*why == 'n') {
        QVERIFY(!WriteBytes(path));
        Put(folder.filePath("new"), kOldSettings);
        QVERIFY(!varkel::ReplaceFile(folder.filePath("new"), path));
        QVERIFY(QFile::remove(folder.filePath("new")));
      }
      QVERIFY(clock.elapsed() < 1000);
      QCOMPARE(Files(folder.path()), QStringList{"file"});
      QCOMPARE(mode(), before);
    }
  }

  void InvalidSettingsAreReported() {
    const QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                         "/VelmoraDataFiles/RecvSettings.ini";
    QFile::remove(path);
    QVERIFY(QDir().mkpath(path));
    ControllerFixture fixture;
    const QString why = path + ": it is not a regular file.";
    QTRY_VERIFY(fixture.log.contains("WARNING The defaults are used instead of the settings in " + why));
    QVERIFY(fixture.Connect());
    QVERIFY(fixture.log.contains("WARNING The connection settings can't be saved to " + why));
    QVERIFY(QDir().rmdir(path));
  }

  void FullDiskLeavesTheOldContent() {
    for (const Write& write : {Write(WriteSettings), Write(WriteBytes)}) {
      const QTemporaryDir folder;
      const QString path = folder.filePath("file");
      Put(path, kOldSettings);
      auto full = std::make_unique<FullDisk>(kLimit);
      const bool written = write(path);
      full.reset();
      QVERIFY(!written);
      QCOMPARE(Content(path), QByteArray(kOldSettings));
      QCOMPARE(Files(folder.path()), QStringList{"file"});
      QVERIFY(write(path));
      QVERIFY(std::cmp_greater_equal(Content(path).size(), kTooMuch));
    }
  }

  void NamesAreSanitizedForFiles() {
    const QString letters = QString::fromUtf8("é😀");  // 2 and 4 bytes
    const std::pair<QString, QString> cases[] = {
        {"Event Log", "Event Log"},
        {"a*?\"<>| Log", "a______ Log"},
        {"../../up Log", "_._.._up Log"},
        {QString::fromUtf8("gnp\xE2\x80\xAE.exe\n\x1B Log"), "gnp_.exe__ Log"},
        {letters.repeated(100), letters.repeated(30)}};
    for (const auto& [name, file_name] : cases) QCOMPARE(varkel::SanitizedFileName(name), file_name);
  }
};

const RegisterTest<HostileFilesTest> register_hostile_files_test;

}  // namespace

#include "hostile_files_test.moc"
