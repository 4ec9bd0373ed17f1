#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <share.h>
#endif

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <thread>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/recent_addresses.h"
#include "VarkelCore/src/tasks/atomic_file.h"
#include "tests/core/core_test.h"
#include "tests/support/qt_files.h"

namespace {

class SettingsTest : public QObject {
  Q_OBJECT
 private slots:
  void AbsentOrOddValues() {
    const std::pair<QByteArray, QString> cases[] = {
        {"", "192.168.1.201 3000000 2368"},
        {"[General]\nudp_port=2400\n", "192.168.1.201 3000000 2400"},
        {"[General]\ndevice_ip_address=1,2\npoint_cloud_baudrate=fast\nudp_port=\n", " 0 0"},
        {QByteArray("\x00\xff\xfe[[[\n=\n", 8), "192.168.1.201 3000000 2368"}};
    for (const auto& [content, expected] : cases) {
      QTemporaryDir folder;
      QFile file(folder.filePath("settings.ini"));
      QVERIFY(content.isEmpty() || (file.open(QIODevice::WriteOnly) && file.write(content) > 0));
      file.close();
      const auto read = varkel::SettingsFile(file.fileName()).Load();
      QCOMPARE(QString("%1 %2 %3").arg(read.ip_address.c_str()).arg(read.baud_rate).arg(read.udp_port),
               expected);
    }
  }

  void SavingKeepsTheUdpPortOfTheHost() {
    QTemporaryDir folder;
    const QString path = folder.filePath("settings.ini");
    QSettings(path, QSettings::IniFormat).setValue("udp_port", 2400);
    const varkel::SettingsFile file(path);
    varkel::ConnectionSettings settings = file.Load();
    settings.ip_address = "10.0.0.7";
    settings.udp_port = 9;
    file.Save(settings);
    const QSettings written(path, QSettings::IniFormat);
    QCOMPARE(written.allKeys().size(), 6);
    QCOMPARE(written.value("udp_port").toInt(), 2400);
    QCOMPARE(written.value("point_cloud_baudrate").toString(), "3000000");
    QCOMPARE(file.Load().ip_address, std::string("10.0.0.7"));
  }

  void SavingWhileAnotherCopyReads() {
    const QTemporaryDir folder;
    const varkel::SettingsFile file(folder.filePath("settings.ini"));
    const varkel::ConnectionSettings settings{.ip_address = "10.0.0.7"};
    QCOMPARE(file.Save(settings), std::string());
    std::atomic<int> wrong = 0;
    {
      const std::jthread other([&](const std::stop_token& end) {
        while (!end.stop_requested()) {
          wrong += file.Load().ip_address != settings.ip_address;
          QThread::msleep(20);
        }
      });
      for (int i = 0; i < 20; ++i) {
        const std::string fault = file.Save(settings);
        QVERIFY2(fault.empty(), fault.c_str());
      }
    }
    QCOMPARE(wrong.load(), 0);
  }

  void SavingWaitsForAnotherProgram() {
    const QTemporaryDir folder;
    const QString path = folder.filePath("settings.ini");
    QLockFile held(path + ".lock");
    QVERIFY(held.lock());
    const std::jthread other([&held] {
      QThread::msleep(600);
      held.unlock();
    });
    QCOMPARE(varkel::SettingsFile(path).Save({.ip_address = "10.0.0.7"}), std::string());
    QCOMPARE(varkel::SettingsFile(path).Load().ip_address, std::string("10.0.0.7"));
  }

  void LongPaths() {
    const QTemporaryDir folder;
    const QString deep =
        folder.filePath(QString(120, 'a') + '/' + QString(120, 'b') + '/' + QString(120, 'c'));
    const QString path = deep + "/settings.ini";
    const varkel::ConnectionSettings settings{.ip_address = "10.0.0.7"};
    QCOMPARE(varkel::SettingsFile(path).Save(settings), std::string());
    QCOMPARE(varkel::SettingsFile(path).Load().ip_address, settings.ip_address);
    QVERIFY(varkel::WriteAtomically(deep + "/new", std::vector<std::uint8_t>(9)) ==
            varkel::WriteResult::kWritten);
    QVERIFY(varkel::ReplaceFile(deep + "/new", path));
    QCOMPARE(Content(path).size(), 9);
  }

#ifdef _WIN32
  // The host viewer may have the file open and let others read it, or not even that.
  void AFileInUseIsLeftAsItIs() {
    for (const int share : {_SH_DENYRW, _SH_DENYWR}) {
      const QTemporaryDir folder;
      const QString path = folder.filePath("settings.ini");
      Put(path, "[General]\nudp_port=2400\n");
      const int held = _wsopen(path.toStdWString().c_str(), _O_RDONLY, share);
      QVERIFY(held >= 0);
      std::string unread;
      const varkel::ConnectionSettings settings = varkel::SettingsFile(path).Load(&unread);
      const std::string fault = varkel::SettingsFile(path).Save(settings);
      _close(held);
      QCOMPARE(unread.empty(), share == _SH_DENYWR);
      QVERIFY2(fault.find("can't be saved") != std::string::npos, fault.c_str());
      QCOMPARE(Content(path), QByteArray("[General]\nudp_port=2400\n"));
      QCOMPARE(Files(folder.path()), QStringList{"settings.ini"});
    }
  }
#endif

  void TenAddressesAreKeptTheMostRecentFirst() {
    QTemporaryDir folder;
    const QString path = folder.filePath("own/recent.txt");
    varkel::RecentAddresses first(path);
    for (int i = 0; i < 12; ++i) first.add(QString("10.0.0.%1").arg(i));
    first.add("10.0.0.5");
    first.remove("10.0.0.10");
    const varkel::RecentAddresses next(path);
    QCOMPARE(next.all().join(' '),
             "10.0.0.5 10.0.0.11 10.0.0.9 10.0.0.8 10.0.0.7 10.0.0.6 10.0.0.4 10.0.0.3 10.0.0.2");
    varkel::RecentAddresses below_a_file(path + "/recent.txt");
    QSignalSpy not_kept(&below_a_file, &varkel::RecentAddresses::notKept);
    below_a_file.add("10.0.0.1");
    QVERIFY(not_kept.value(0).value(0).toString().contains(path));
  }
};

const RegisterTest<SettingsTest> register_settings_test;

}  // namespace

#include "settings_test.moc"
