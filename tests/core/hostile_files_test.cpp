#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <csignal>
#include <utility>

#include "VarkelCore/src/connection_settings.h"
#include "VarkelCore/src/whole_file.h"
#include "tests/core/core_test.h"
#include "tests/core/file_content.h"

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

class HostileFilesTest : public QObject {
  Q_OBJECT
 private slots:
  void SettingsThatAreNone() {
    const struct {
      std::function<void(const QByteArray& path)> make;
      const char* why;
    } cases[] = {{[](const auto& path) { mkdir(path, 0700); }, "no regular file"},
                 {[](const auto& path) { QCOMPARE(symlink(path, path), 0); }, "no regular file"},
                 {[](const auto& path) { mkfifo(path, 0600); }, "no regular file"},  // nobody fills it
                 {[](const auto& path) {
                    Put(path, kOld);
                    QFile::resize(path, 100'000'000);
                  },
                  "100000000 bytes"},
                 {[](const auto& path) {
                    Put(path, kOld);
                    chmod(path, 0);
                  },
                  "Permission denied"}};
    for (const auto& [make, why] : cases) {
      if (geteuid() == 0 && *why == 'P') continue;  // who may read everything
      const QTemporaryDir folder;
      const QString path = folder.filePath("settings.ini");
      make(path.toUtf8());
      QElapsedTimer clock;
      clock.start();
      std::string fault;
      const varkel::SettingsFile file(path);
      const varkel::ConnectionSettings settings = file.Load(&fault);
      QCOMPARE(settings.ip_address, std::string("192.168.1.201"));
      QVERIFY2(fault.find(why) != std::string::npos, fault.c_str());
      fault = file.Save(settings);
      QVERIFY2(fault.find(why) != std::string::npos, fault.c_str());
      QVERIFY(clock.elapsed() < 1000);
      QCOMPARE(Files(folder.path()).size(), 1);
    }
  }

  void OldContentOutlivesTheWriter() {
    const std::function<bool(const QString& path)> writers[] = {
        [](auto& path) {
          return varkel::SettingsFile(path).Save({.ip_address = std::string(kTooMuch, '1')}).empty();
        },
        [](auto& path) {
          const std::vector<std::uint8_t> bytes(kTooMuch);
          return varkel::WriteWholeFile(path, bytes) == varkel::WriteResult::kWritten;
        }};
    for (const auto& write : writers) {
      const QTemporaryDir folder;
      const QString path = folder.filePath("file");
      Put(path, kOld);
      auto full = std::make_unique<FullDisk>(kLimit);
      const bool written = write(path);
      full.reset();
      QVERIFY(!written);
      QCOMPARE(Content(path), QByteArray(kOld));
      QCOMPARE(Files(folder.path()), QStringList{"file"});

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
  }

  void OldArchiveOutlivesAFailure_data() {
    // `tar` is a script in place of the program, "-": there is none. `disk`: bytes that a file may have.
    const Table<QString, int, QString> row("tar", "disk", "name");
    row("no tar", "-", 0, "logs.tar");
    row("tar fails", "echo half > \"$2\"; exit 2", 0, "logs.tar");
    row("tar dies", "echo half > \"$2\"; kill -9 $$", 0, "logs.tar");
    row("no such folder", "", 0, "missing/logs.tar");
    row("no room for the archive", "", 2 * kLimit, "logs.tar");
    row("no room for the parts", "", 64, "logs.tar");
  }
  void OldArchiveOutlivesAFailure() {
    QFETCH(QString, tar);
    QFETCH(int, disk);
    QFETCH(QString, name);
    Bench bench;
    QVERIFY(bench.ConnectOn());
    const QTemporaryDir folder;
    const QTemporaryDir programs;
    const QString path = folder.filePath("logs.tar");
    QDir parts(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/operation_log");
    parts.removeRecursively();  // an earlier run's
    const QByteArray search_path = qgetenv("PATH");
    Put(path, kOld);
    Put(programs.filePath("tar"), "#!/bin/sh\n" + tar.toUtf8());
    if (tar.size() > 1) QFile::setPermissions(programs.filePath("tar"), QFile::ReadOwner | QFile::ExeOwner);
    if (!tar.isEmpty()) qputenv("PATH", programs.path().toUtf8());
    auto full = disk > 0 ? std::make_unique<FullDisk>(disk) : nullptr;
    bench.manager->DownloadOperationLog(QUrl::fromLocalFile(folder.filePath(name)));
    const QString error = bench.NextError();
    full.reset();
    qputenv("PATH", search_path);
    QCOMPARE(error, QString("Operation log download failed."));
    QVERIFY(!bench.manager->IsDownloadLog());
    QCOMPARE(Content(path), QByteArray(kOld));
    QCOMPARE(Files(folder.path()), QStringList{"logs.tar"});
    const bool asked = tar != "-";
    QCOMPARE(bench.sensor->Received(0x61).empty(), !asked);
    if (asked && disk == 0) QCOMPARE(parts.entryList(QDir::Files).size(), 4);  // what came stays for a look
    QCOMPARE(bench.manager->DownloadOperationLog(QUrl::fromLocalFile(path)), 0);
    QCOMPARE(bench.NextSuccess(), QString("Operation log download successful."));
    QVERIFY(Content(path).size() > 2 * kLimit);  // in place of the old one
  }
};

const RegisterTest<HostileFilesTest> registered;

}  // namespace

#include "hostile_files_test.moc"
