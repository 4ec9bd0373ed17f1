#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/recent_addresses.h"
#include "tests/core/core_test.h"

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
  }
};

const RegisterTest<SettingsTest> register_settings_test;

}  // namespace

#include "settings_test.moc"
