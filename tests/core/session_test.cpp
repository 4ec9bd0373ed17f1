#include <QTemporaryDir>

#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "tests/core/core_test.h"
#include "tests/support/qt_files.h"

namespace {

// How operations, periodic rounds and disconnects interact.
class SessionTest : public QObject {
  Q_OBJECT
 private slots:
  void initTestCase() { quarn::lidar::Timeouts().unpack_ms = 1000; }

  void EveryOperationWorksOverASmallSensorsKtc() {
    ControllerFixture fixture({}, "Marvo-KTC");
    VarkelManager& manager = *fixture.manager;
    QVERIFY(fixture.Connect());
    fixture.sensor->SetValue("PN", "M-0815");
    QVERIFY(manager.UpdateSingleVarInfo("PN"));
    QCOMPARE(fixture.Shown("PN"), "M-0815");
    fixture.Edit("Destination Port", "3000");
    manager.Run(1);
    QVERIFY(fixture.NextSuccess().startsWith("Set Lidar Successfully"));
    QCOMPARE(fixture.sensor->ValueText("Destination Port"), std::string("3000"));
    manager.StartGetConfigFile();
    QVERIFY(fixture.sensor->WaitReceived(116, 1, std::chrono::seconds(20)));
    QCOMPARE(manager.DownloadLog(QUrl::fromLocalFile(folder_.path()), "SN"), 0);
    QCOMPARE(fixture.NextSuccess(), "SN download successful.");
    manager.ZeltoSetUpgradeMode(2);  // the junction box
    QCOMPARE(manager.ZeltoUpgradeLidar(Package(2500)), 0);
    QVERIFY(fixture.NextSuccess().startsWith("Upgrade package transmitted successfully."));
    QCOMPARE(fixture.sensor->ReceivedPackage().size(), 2500U);
    QTRY_COMPARE(fixture.sensor->restarts(), 1U);
    QVERIFY2(fixture.errors.isEmpty(), qPrintable(fixture.errors.join('\n')));
  }

  void UpgradeStaysWithItsSensor() {
    for (const bool in_transfer : {true, false}) {
      ControllerFixture fixture({"0x60=late:200#2"});
      VarkelManager& manager = *fixture.manager;
      varkel::sim::SimulatedSensor other({.table_path = "./Config/varID/Quenta.csv"});
      other.Start();
      QVERIFY(fixture.ConnectOn());
      const auto row = fixture.Find("Firmware Upgrade");
      QCOMPARE(manager.UpgradeLidar(Package(4000), row.page, row.group, row.index), 0);
      if (in_transfer) {
        QVERIFY(fixture.sensor->WaitReceived(0x60, 2, std::chrono::seconds(20)));
      } else {
        QVERIFY(fixture.NextSuccess().startsWith("Upgrade package transmitted successfully."));
      }
      manager.Stop();
      manager.set_port(QString::number(other.port()));
      QVERIFY(fixture.Connect());
      QCOMPARE(fixture.NextError(), in_transfer ? "Upgrade package transfer failed or is terminated."
                                                : "Auto reboot failed. Please reboot lidar manually.");
      QVERIFY(!manager.IsUpgrading() && manager.IsConnected());
      QVERIFY(other.Received(0x60).empty());
      QCOMPARE(other.restarts() + fixture.sensor->restarts(), 0U);
    }
  }

  void UpgradedSensorIsConnectedAgain() {
    ControllerFixture fixture;
    VarkelManager& manager = *fixture.manager;
    QVERIFY(fixture.ConnectOn());
    const auto row = fixture.Find("Firmware Upgrade");
    Put(folder_.filePath("named"), "VARKEL-SIM FIRMWARE 9.8.7.6 2024-10-01\n");
    QCOMPARE(
        manager.UpgradeLidar(QUrl::fromLocalFile(folder_.filePath("named")), row.page, row.group, row.index),
        0);
    QVERIFY(fixture.Wait([&] { return manager.sensorReturn()->property("isWaiting").toBool(); }));
    QVERIFY(!manager.IsConnected());
    QVERIFY(fixture.Wait([&] { return manager.IsConnected(); }));
    QCOMPARE(manager.sensorReturn()->property("text").toString(),
             QString("The sensor is back after the upgrade.\n"
                     "Firmware Version: 3.4.12.0 (2024-09-18) → 9.8.7.6 (2024-10-01)"));
    QVERIFY2(fixture.errors.isEmpty(), qPrintable(fixture.errors.join('\n')));
  }

  void DisconnectInARoundIsNoFaultOfTheSensor() {
    ControllerFixture fixture({"ldcmd-get:10=late:500"}, "Zelto-KTC");  // the first request of a round
    for (int attempt = 0; attempt < 8; ++attempt) {
      fixture.sensor->device().log.Clear();
      QVERIFY(fixture.Connect());
      QVERIFY(fixture.Wait([&] { return !fixture.sensor->device().log.All().empty(); }));
      fixture.manager->Stop();
      fixture.Wait([] { return true; });  // runs events that the round still posted
      QCOMPARE(fixture.log.filter("ERROR"), QStringList());
    }
  }

  void ConnectionDoesNotWaitForVersions() {
    ControllerFixture fixture({"ldcmd-get:15=silence"}, "Zelto-KTC");
    VarkelManager& manager = *fixture.manager;
    const auto version = [&] { return manager.ZeltoLidarVersionInfo()[0].toMap()["value"].toString(); };
    bool asked_before = false;
    connect(&manager, &VarkelManager::isGetPBLVersionChanged, this,
            [&] { asked_before |= !manager.IsConnected(); });
    QVERIFY(fixture.Connect());
    QVERIFY(fixture.Wait([&] { return manager.isGetPBLVersion(); }));
    QVERIFY(!asked_before);
    QCOMPARE(version(), "xxxxxxxx");
    fixture.ClearFaults();
    QVERIFY(fixture.Wait([&] { return version() != "xxxxxxxx"; }));
  }

 private:
  QUrl Package(int size) const {
    Put(folder_.filePath("package"), QByteArray(size, 'x'));
    return QUrl::fromLocalFile(folder_.filePath("package"));
  }

  const QTemporaryDir folder_;
};

const RegisterTest<SessionTest> register_session_test;

}  // namespace

#include "session_test.moc"
