#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include "VarkelCore/src/connection_settings.h"
#include "tests/core/core_test.h"

namespace {

class SettingsTest : public QObject {
  Q_OBJECT
 private slots:
  void AbsentOrOddValues_data();
  void AbsentOrOddValues();
  void SavingKeepsTheUdpPortOfTheHost();
  void SettersOfTheFace();
};

void SettingsTest::AbsentOrOddValues_data() {
  QTest::addColumn<QByteArray>("content");
  QTest::addColumn<QString>("ip");
  QTest::addColumn<int>("baud_rate");
  QTest::addColumn<int>("udp_port");
  QTest::newRow("no file") << QByteArray() << "192.168.1.201" << 3000000 << 2368;
  QTest::newRow("one key") << QByteArray("[General]\nudp_port=2400\n") << "192.168.1.201" << 3000000 << 2400;
  QTest::newRow("wrong types")
      << QByteArray("[General]\ndevice_ip_address=1,2\npoint_cloud_baudrate=fast\nudp_port=\n") << "" << 0
      << 0;
  QTest::newRow("not an INI file") << QByteArray("\x00\xff\xfe[[[\n=\n", 8) << "192.168.1.201" << 3000000
                                   << 2368;
}

void SettingsTest::AbsentOrOddValues() {
  QFETCH(QByteArray, content);
  QTemporaryDir folder;
  const QString path = folder.filePath("settings.ini");
  if (!content.isEmpty()) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
  }
  const auto settings = varkel::SettingsFile(path).Load();
  QTEST(QString::fromStdString(settings.ip_address), "ip");
  QTEST(settings.baud_rate, "baud_rate");
  QTEST(int{settings.udp_port}, "udp_port");
}

void SettingsTest::SavingKeepsTheUdpPortOfTheHost() {
  QTemporaryDir folder;
  const QString path = folder.filePath("settings.ini");
  QSettings(path, QSettings::IniFormat).setValue("udp_port", 2400);
  const varkel::SettingsFile file(path);
  varkel::ConnectionSettings settings = file.Load();
  settings.ip_address = "10.0.0.7";
  settings.port = "1";
  settings.udp_port = 9;
  file.Save(settings);
  const QSettings written(path, QSettings::IniFormat);
  QCOMPARE(written.allKeys().size(), 6);
  QCOMPARE(written.value("udp_port").toInt(), 2400);
  QCOMPARE(written.value("point_cloud_baudrate").toString(), QString("3000000"));
  QCOMPARE(QString::fromStdString(file.Load().ip_address), QString("10.0.0.7"));
}

void SettingsTest::SettersOfTheFace() {
  Bench bench;
  VarkelManager& manager = *bench.manager;
  manager.setUdpPort("70000");
  QCOMPARE(manager.udpPort(), QString("4464"));
  manager.setUdpPort("x");
  QCOMPARE(bench.NextError(), QString("invalid stoi argument"));
  QCOMPARE(bench.log.last(), QString("ERROR invalid stoi argument"));
  manager.setUdpPort("99999999999");
  QCOMPARE(bench.NextError(), QString("stoi argument out of range"));
  QCOMPARE(manager.udpPort(), QString("4464"));
  manager.set_baud_rate("x");
  QCOMPARE(manager.baud_rate(), QString("0"));

  QSignalSpy error_changed(&manager, &VarkelManager::errorMessageChanged);
  manager.setErrorMsg("");
  QCOMPARE(error_changed.count(), 0);
  QSignalSpy download_changed(&manager, &VarkelManager::isDownloadLogChanged);
  manager.setIsDownloadLog(false);
  QCOMPARE(download_changed.count(), 0);
  manager.setIsDownloadLog(true);
  QCOMPARE(download_changed.count(), 1);
}

const RegisterTest<SettingsTest> registered;

}  // namespace

#include "settings_test.moc"
