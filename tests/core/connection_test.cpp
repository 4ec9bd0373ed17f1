#include <QElapsedTimer>
#include <QTemporaryDir>

#include "tests/core/core_test.h"
#include "tests/support/silent_address.h"

namespace {

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void EitherProbeCommandWillDo() {
    for (const char* misbehaviour : {"0x08=error:3", "0x07=error:3"}) {
      Bench bench({misbehaviour});
      QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
      QVERIFY(bench.Connect());
      QCOMPARE(map_changed.count(), 1);
      QVERIFY(!bench.manager->GetIsConnectingLidar());
      QCOMPARE(bench.log, QStringList{"INFO Lidar connected"});
      QVERIFY(bench.errors.isEmpty());
    }
  }

  void FailuresAreReported() {
    const QStringList cases[] = {{"127.0.0.1", "1", "TCP connection failed."},
                                 {"sensor", "2", "TCP connection failed."},
                                 {"127.0.0.1", "", "Lidar has No KTC reply."},  // the sensor's own port
                                 {"127.0.0.1", "ktc", "invalid stoi argument"},
                                 {"127.0.0.1", "99999999999", "stoi argument out of range"}};
    for (const QStringList& texts : cases) {
      Bench bench({"0x07=error:3", "0x08=error:3"});
      bench.manager->set_ip_address(texts[0]);
      if (!texts[1].isEmpty()) bench.manager->set_port(texts[1]);
      QVERIFY(bench.manager->ConnectLidar());
      QCOMPARE(bench.NextError(), "Connection Failed. Please check your network settings.");
      QTRY_COMPARE(bench.log, QStringList{"ERROR Connection Error: " + texts[2]});
      QVERIFY(!bench.manager->IsConnected());
      QTRY_VERIFY(!bench.manager->GetIsConnectingLidar());
    }
  }

  void SecondAttemptIsRefusedWhileOneRuns() {
    Bench bench({"0x07=late:300"});
    QVERIFY(bench.manager->ConnectLidar());
    QTRY_VERIFY(bench.manager->GetIsConnectingLidar());
    QVERIFY(!bench.manager->ConnectLidar());
    QTRY_VERIFY(bench.manager->IsConnected());
  }

  void DisconnectForgetsTheSerialNumber() {
    Bench bench;
    QVERIFY(bench.Connect());
    bench.manager->GetLidarModuleInfo(0);
    QCOMPARE(bench.manager->getLidarSN(), QString::fromStdString(bench.sensor->ValueText("SN")));
    bench.Edit("Subnet Mask", "255.255.0.0");
    QCOMPARE(bench.manager->getSetMapSize(), 1);
    QSignalSpy connected_changed(bench.manager.get(), &VarkelManager::isConnectedChanged);
    QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
    bench.manager->Stop();
    QCOMPARE(bench.manager->getLidarSN(), "xxxxxxxx");
    QCOMPARE(bench.manager->getSetMapSize(), 0);
    QVERIFY(!bench.manager->IsConnected());
    QCOMPARE(connected_changed.count(), 1);
    QCOMPARE(map_changed.count(), 1);
    QCOMPARE(bench.log.last(), "INFO Lidar disconnected");
    QTRY_COMPARE(bench.sensor->connected_clients(), 0U);
    QVERIFY(!bench.manager->CheckLidarConnection());
    QVERIFY(bench.Connect());
  }

  void CheckTellsALostSensor() {
    Bench bench;
    QVERIFY(bench.Connect());
    bench.sensor->Misbehave("0x07=error:1");
    QVERIFY(bench.manager->CheckLidarConnection());
    bench.sensor->Misbehave("0x08=error:1");
    QSignalSpy checked(bench.manager.get(), &VarkelManager::connectionCheckFinished);
    bench.manager->CheckConnectionInBackground();
    QVERIFY(checked.wait());
    QCOMPARE(checked.first().first().toBool(), false);
    QVERIFY(bench.manager->IsConnected());  // the check only tells
  }

  void ByteFlowLeavesProbesOut() {
    Bench bench;
    bench.manager->SetLogBytesFlowStatus(true);
    QVERIFY(bench.ConnectOn());
    QVERIFY(bench.manager->CheckLidarConnection());
    QCOMPARE(bench.log, QStringList{"INFO Lidar connected"});
    QVERIFY(bench.manager->UpdateSingleVarInfo("Calibration Count"));
    QTRY_COMPARE(bench.log.size(), 3);
    QCOMPARE(bench.log[1], "BYTES SEND: 47 74 0c 00 00 00 00 00 ");
    QVERIFY2(bench.log[2].startsWith("BYTES RECV: "), qPrintable(bench.log[2]));
  }

  void StartModelIsTheOnlyOne() {
    Bench bench;
    QSignalSpy list_changed(bench.manager.get(), &VarkelManager::lidarModelListChanged);
    bench.manager->SetVMNowName("");
    bench.manager->SetVMNowName("no such model");
    QCOMPARE(list_changed.count(), 0);
    QSignalSpy type_changed(bench.manager.get(), &VarkelManager::connectTypeChanged);
    bench.manager->SetVMNowName("Zelto");
    QCOMPARE(list_changed.count(), 1);
    QCOMPARE(type_changed.count(), 1);
    QCOMPARE(bench.manager->connectType(), 1);
    QCOMPARE(bench.manager->LidarModelList(), QVariantList{"Zelto"});
    Bench host;
    host.manager->SetVMNowName("Marvo-KTC");  // in no list, but a host may ask for it
    QCOMPARE(host.manager->connectType(), 2);
    QCOMPARE(host.manager->LidarModelList(), QVariantList{"Marvo-KTC"});
  }

  /// With a silent sensor an exchange takes four seconds: whatever waits for one is found out here.
  void CallsOfTheWindowReturnAtOnce() {
    Bench bench;
    VarkelManager& manager = *bench.manager;
    QVERIFY(bench.ConnectOn(1));
    bench.sensor->Misbehave("*=silence");
    bench.Edit("Subnet Mask", "255.255.0.0");
    const QTemporaryDir folder;
    const std::vector<std::pair<const char*, std::function<void()>>> calls = {
        {"read", [&] { manager.ReadPageInBackground(2); }},
        {"save", [&] { manager.RunInBackground(2); }},
        {"check", [&] { manager.CheckConnectionInBackground(); }},
        {"command", [&] { manager.SendCommandInBackground("07", ""); }},
        {"restart", [&] { manager.RestartInBackground(); }},
        {"reset", [&] { manager.ResetInBackground(); }},
        {"download", [&] { manager.DownloadLog(QUrl::fromLocalFile(folder.path()), "Fault Log"); }},
        {"disconnect", [&] { manager.Stop(); }}};
    for (const auto& [name, call] : calls) {
      QElapsedTimer timer;
      timer.start();
      call();
      QVERIFY2(timer.elapsed() < 500, name);
    }
  }

  /// How far things got when the user closes the window.
  void ClosingNeverWaitsForTheSensor_data() {
    const Table<QString> row("moment");
    for (const char* moment : {"connecting", "probing", "refreshing", "reading", "checking", "saving"}) {
      row(moment, moment);
    }
  }
  void ClosingNeverWaitsForTheSensor() {
    QFETCH(QString, moment);
    Bench bench;
    VarkelManager& manager = *bench.manager;
    const quarn::test::SilentAddress silent;
    if (moment == "connecting") {
      manager.set_port(QString::number(silent.port()));
      manager.ConnectLidar();
      QTRY_VERIFY(manager.GetIsConnectingLidar());
    } else if (moment == "probing") {
      bench.sensor->Misbehave("*=silence");
      manager.ConnectLidar();
      QVERIFY(bench.sensor->WaitReceived(7, 1, std::chrono::seconds(5)));
    } else {
      QVERIFY(bench.ConnectOn(1));
      if (moment != "refreshing") bench.sensor->Misbehave("*=silence");
      bench.sensor->ClearReceived();
      if (moment == "reading") manager.ReadPageInBackground(0);
      if (moment == "checking") manager.CheckConnectionInBackground();
      if (moment == "saving") {
        bench.Edit("Subnet Mask", "255.255.0.0");
        manager.RunInBackground(2);
      }
      QTRY_VERIFY(bench.sensor->exchanges() > 0);
    }
    QElapsedTimer timer;
    timer.start();
    bench.manager.reset();
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString("closing took %1 ms").arg(timer.elapsed())));
  }
};

const RegisterTest<ConnectionTest> registered;

}  // namespace

#include "connection_test.moc"
