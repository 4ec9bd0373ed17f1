#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include "tests/core/core_test.h"
#include "tests/support/silent_address.h"

namespace {

constexpr char kNetworkNotice[] = "Connection Failed. Please check your network settings.";

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void EitherProbeCommandWillDo_data();
  void EitherProbeCommandWillDo();
  void FailuresAreReported_data();
  void FailuresAreReported();
  void SecondAttemptIsRefusedWhileOneRuns();
  void DisconnectForgetsTheSerialNumber();
  void CheckTellsALostSensor();
  void ByteFlowLeavesProbesOut();
  void StartModelIsTheOnlyOne();
  void CallsOfTheWindowReturnAtOnce();
  void ClosingNeverWaitsForTheSensor_data();
  void ClosingNeverWaitsForTheSensor();
};

void ConnectionTest::EitherProbeCommandWillDo_data() {
  QTest::addColumn<QString>("misbehaviour");
  QTest::newRow("command 7") << "0x08=error:3";
  QTest::newRow("command 8") << "0x07=error:3";
}

void ConnectionTest::EitherProbeCommandWillDo() {
  QFETCH(QString, misbehaviour);
  Bench bench({misbehaviour.toStdString()});
  QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
  QVERIFY(bench.Connect());
  QCOMPARE(map_changed.count(), 1);
  QVERIFY(!bench.manager->GetIsConnectingLidar());
  QCOMPARE(bench.log, QStringList{"INFO Lidar connected"});
  QVERIFY(bench.errors.isEmpty());
}

void ConnectionTest::FailuresAreReported_data() {
  QTest::addColumn<QString>("ip");
  QTest::addColumn<QString>("port");  // empty: the sensor's
  QTest::addColumn<QString>("log");
  QTest::newRow("refused") << "127.0.0.1"
                           << "1"
                           << "TCP connection failed.";
  QTest::newRow("no address") << "sensor"
                              << ""
                              << "TCP connection failed.";
  QTest::newRow("mute sensor") << "127.0.0.1"
                               << ""
                               << "Lidar has No KTC reply.";
  QTest::newRow("port is no number") << "127.0.0.1"
                                     << "ktc"
                                     << "invalid stoi argument";
  QTest::newRow("port too large") << "127.0.0.1"
                                  << "99999999999"
                                  << "stoi argument out of range";
}

void ConnectionTest::FailuresAreReported() {
  QFETCH(QString, ip);
  QFETCH(QString, port);
  QFETCH(QString, log);
  Bench bench({"0x07=error:3", "0x08=error:3"});
  bench.manager->set_ip_address(ip);
  if (!port.isEmpty()) bench.manager->set_port(port);
  QVERIFY(bench.manager->ConnectLidar());
  QCOMPARE(bench.NextError(), QString(kNetworkNotice));
  QTRY_COMPARE(bench.log, QStringList{"ERROR Connection Error: " + log});
  QVERIFY(!bench.manager->IsConnected());
  QTRY_VERIFY(!bench.manager->GetIsConnectingLidar());
}

void ConnectionTest::SecondAttemptIsRefusedWhileOneRuns() {
  Bench bench({"0x07=late:300"});
  QVERIFY(bench.manager->ConnectLidar());
  QTRY_VERIFY(bench.manager->GetIsConnectingLidar());
  QVERIFY(!bench.manager->ConnectLidar());
  QTRY_VERIFY(bench.manager->IsConnected());
}

void ConnectionTest::DisconnectForgetsTheSerialNumber() {
  Bench bench;
  QVERIFY(bench.Connect());
  bench.manager->GetLidarModuleInfo(0);
  QCOMPARE(bench.manager->getLidarSN(), QString::fromStdString(bench.sensor->ValueText("SN")));
  bench.Edit("Subnet Mask", "255.255.0.0");
  QCOMPARE(bench.manager->getSetMapSize(), 1);

  QSignalSpy connected_changed(bench.manager.get(), &VarkelManager::isConnectedChanged);
  QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
  bench.manager->Stop();
  QCOMPARE(bench.manager->getLidarSN(), QString("xxxxxxxx"));
  QCOMPARE(bench.manager->getSetMapSize(), 0);
  QVERIFY(!bench.manager->IsConnected());
  QCOMPARE(connected_changed.count(), 1);
  QCOMPARE(map_changed.count(), 1);
  QCOMPARE(bench.log.last(), QString("INFO Lidar disconnected"));
  QTRY_COMPARE(bench.sensor->connected_clients(), std::size_t{0});
  QVERIFY(!bench.manager->CheckLidarConnection());
  QVERIFY(bench.Connect());
}

void ConnectionTest::CheckTellsALostSensor() {
  Bench bench;
  QVERIFY(bench.Connect());
  QVERIFY(bench.manager->CheckLidarConnection());
  bench.sensor->Misbehave("0x07=error:1");
  QVERIFY(bench.manager->CheckLidarConnection());
  bench.sensor->Misbehave("0x08=error:1");
  QSignalSpy checked(bench.manager.get(), &VarkelManager::connectionCheckFinished);
  bench.manager->CheckConnectionInBackground();
  QVERIFY(checked.wait());
  QCOMPARE(checked.first().first().toBool(), false);
  QVERIFY(bench.manager->IsConnected());  // the check only tells
}

void ConnectionTest::ByteFlowLeavesProbesOut() {
  Bench bench;
  bench.manager->SetLogBytesFlowStatus(true);
  bench.manager->setModuleIndexUse(2);  // a page without live values: nothing else is on the wire
  QVERIFY(bench.Connect());
  QVERIFY(bench.manager->CheckLidarConnection());
  QCOMPARE(bench.log, QStringList{"INFO Lidar connected"});
  QVERIFY(bench.manager->UpdateSingleVarInfo("Calibration Count"));
  QTRY_VERIFY(bench.log.size() == 3);
  QCOMPARE(bench.log[1], QString("BYTES SEND: 47 74 0c 00 00 00 00 00 "));
  QVERIFY2(bench.log[2].startsWith("BYTES RECV: "), qPrintable(bench.log[2]));
}

void ConnectionTest::StartModelIsTheOnlyOne() {
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
void ConnectionTest::CallsOfTheWindowReturnAtOnce() {
  Bench bench;
  VarkelManager& manager = *bench.manager;
  manager.setModuleIndexUse(1);
  QVERIFY(bench.Connect());
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
    qInfo("%s: %lld us", name, timer.nsecsElapsed() / 1000);
    QVERIFY2(timer.elapsed() < 500, name);
  }
}

/// How far things got when the user closes the window.
void ConnectionTest::ClosingNeverWaitsForTheSensor_data() {
  QTest::addColumn<QString>("moment");
  for (const char* moment : {"connecting", "probing", "refreshing", "reading", "checking", "saving"}) {
    QTest::newRow(moment) << moment;
  }
}

void ConnectionTest::ClosingNeverWaitsForTheSensor() {
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
    manager.setModuleIndexUse(1);
    QVERIFY(bench.Connect());
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
  const qint64 took = timer.elapsed();
  QVERIFY2(took < 1000, qPrintable(QString("closing took %1 ms").arg(took)));
}

const RegisterTest<ConnectionTest> registered;

}  // namespace

#include "connection_test.moc"
