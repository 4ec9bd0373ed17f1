#include <QElapsedTimer>

#include "tests/core/core_test.h"

namespace {

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void FailuresAreReported() {
    // Where the attempt goes, what the user is to check, and why. "same": one port for both lines.
    const QStringList cases[] = {
        {"Quenta", "127.0.0.1", "1", "network settings", "TCP connection failed."},
        {"Quenta", "sensor", "2", "network settings", "TCP connection failed."},
        {"Quenta", "127.0.0.1", "ktc", "network settings", "invalid stoi argument"},
        {"Quenta", "127.0.0.1", "99999999999", "network settings", "stoi argument out of range"},
        {"Zelto-KTC", "127.0.0.1", "1", "network settings", "TCP connection failed."},
        {"Zelto-KTC", "127.0.0.1", "ktc", "network settings", "invalid stoi argument"},
        {"Zelto", "/dev/none", "/dev/none", "RS485 serial port", "RS485 serial open fail"},
        {"Zelto", "", "/dev/none", "UART serial port", "UART serial open fail"},
        {"Zelto", "", "same", "UART serial port", "UART serial open fail"}};
    for (const QStringList& texts : cases) {
      Bench bench({}, texts[0].toStdString());
      VarkelManager& manager = *bench.manager;
      const QString rs485 = manager.serial_port_485();
      const bool lines = texts[0] == "Zelto";
      const QString first = !texts[1].isEmpty() ? texts[1] : rs485;
      const QString second = texts[2] == "same" ? rs485 : texts[2];
      lines ? manager.set_serial_port_485(first) : manager.set_ip_address(first);
      lines ? manager.set_serial_port_232(second) : manager.set_port(second);
      QVERIFY(manager.ConnectLidar());
      QCOMPARE(bench.NextError(), "Connection Failed. Please check your " + texts[3] + ".");
      QTRY_COMPARE(bench.log, QStringList{"ERROR Connection Error: " + texts[4]});
      QTRY_VERIFY(!manager.GetIsConnectingLidar());
      QVERIFY(!manager.IsConnected());
      if (!lines) continue;
      manager.set_serial_port_485(rs485);
      manager.set_serial_port_232(QString::fromStdString(bench.on_lines->uart_path()));
      QVERIFY(bench.Connect());  // the line that did open is free again
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
    QSignalSpy connected_changed(bench.manager.get(), &VarkelManager::isConnectedChanged);
    QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
    QVERIFY(bench.Connect());
    QCOMPARE(map_changed.count(), 1);
    QCOMPARE(bench.log, QStringList{"INFO Lidar connected"});
    bench.manager->GetLidarModuleInfo(0);
    QCOMPARE(bench.manager->getLidarSN(), QString::fromStdString(bench.sensor->ValueText("SN")));
    bench.Edit("Subnet Mask", "255.255.0.0");
    QCOMPARE(bench.manager->getSetMapSize(), 1);
    bench.manager->Stop();
    QCOMPARE(bench.manager->getLidarSN(), "xxxxxxxx");
    QCOMPARE(bench.manager->getSetMapSize(), 0);
    QVERIFY(!bench.manager->IsConnected());
    QCOMPARE(connected_changed.count(), 2);
    QCOMPARE(map_changed.count(), 3);
    QCOMPARE(bench.log.last(), "INFO Lidar disconnected");
    QTRY_COMPARE(bench.sensor->connected_clients(), 0U);
    QVERIFY(!bench.manager->CheckLidarConnection());
    QVERIFY(bench.Connect());
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

  void SmallSensorInsideKtc() {
    Bench bench({"0x07=error:3"}, "Marvo-KTC");  // either command proves that it is there
    bench.manager->set_baud_rate("3125000");
    QVERIFY(bench.Connect());
    const auto rate = bench.sensor->Received(0xFF).front().payload;
    QCOMPARE(rate, (std::vector<std::uint8_t>{0, 1, 0x39, 0x00, 0x2F, 0xAF, 0x08}));
    bench.manager->SetLogBytesFlowStatus(true);
    QVERIFY(bench.manager->CheckLidarConnection());
    for (const bool silent : {true, false}) {
      QCOMPARE(bench.manager->ZeltoGetDestinationConfig(silent).size(), 2);
      QTRY_COMPARE(bench.log.filter("BYTES SEND: 47 74 08").size(), silent ? 0 : 1);
    }
    bench.manager->Stop();
    QVERIFY(!bench.manager->CheckLidarConnection());
  }

  void SmallSensorOnLines() {
    Bench bench({}, "Zelto");
    VarkelManager& manager = *bench.manager;
    manager.set_baud_rate("3125000");
    for (int round = 0; round < 2; ++round) {
      QVERIFY(bench.Connect());
      QCOMPARE(bench.on_lines->rs485_rate(), 3125000U);
      QCOMPARE(bench.on_lines->uart_rate(), 9600U);
      manager.ZeltoSetStandby(1);  // needs KTC
      QCOMPARE(bench.NextError(), "lidar is not connected, or lidar is upgrade");
      QCOMPARE(manager.connectType(), 2);  // hosts rely on the switch, also when the function is refused
      manager.SendCommand("02", "0A 01");  // the serial number
      QVERIFY2(bench.errors.isEmpty(), qPrintable(bench.errors.join('\n')));
      QVERIFY(manager.getSendKtcCommandReturnHeader().startsWith("24 4C 44 43 4D 44 2C "));
      QVERIFY(manager.CheckLidarConnection());
      manager.Stop();
      QCOMPARE(manager.connectType(), 1);
      QVERIFY(!manager.CheckLidarConnection());
    }
  }

  void StopEndsAnAttemptWithoutANotice() {
    for (const char* model : {"Quenta", "Zelto-KTC", "Zelto"}) {
      Bench bench({"*=silence"}, model);
      QVERIFY(bench.manager->ConnectLidar());
      QTRY_VERIFY(bench.manager->GetIsConnectingLidar() || bench.manager->IsConnected());
      bench.manager->Stop();
      QVERIFY(!bench.manager->GetIsConnectingLidar() && !bench.manager->IsConnected());
      bench.log.clear();
      bench.ClearFaults();
      QVERIFY(bench.Connect());  // at once: the attempt keeps no port and no socket
      QVERIFY2(bench.errors.isEmpty(), qPrintable(bench.errors.join('\n')));
      QVERIFY2(bench.log.filter("Connection Error").isEmpty(), qPrintable(bench.log.join('\n')));
    }
  }

  void ClosingNeverWaitsForASilentSensor() {
    const std::function<void(Bench&)> moments[] = {
        [](auto& bench) { bench.manager->Stop(), bench.manager->ConnectLidar(); },
        [](auto& bench) { bench.manager->CheckConnectionInBackground(); },
        [](auto& bench) { bench.Edit("Subnet Mask", "255.255.0.0"), bench.manager->RunInBackground(2); }};
    for (const auto& begin : moments) {
      Bench bench;
      QVERIFY(bench.ConnectOn());
      bench.AddFault("*=silence");
      bench.sensor->ClearReceived();
      begin(bench);
      QTRY_VERIFY(!bench.sensor->Received().empty());
      QElapsedTimer timer;
      timer.start();
      bench.manager.reset();
      QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    }
  }

  void StartModelIsTheOnlyOne() {
    Bench bench;
    QSignalSpy list_changed(bench.manager.get(), &VarkelManager::lidarModelListChanged);
    QSignalSpy type_changed(bench.manager.get(), &VarkelManager::connectTypeChanged);
    for (const char* name : {"", "no such model"}) bench.manager->SetVMNowName(name);
    QCOMPARE(list_changed.count(), 0);
    int changes = 0;
    // The latter is in no list, but a host may ask for it.
    for (const auto& [name, type] : {std::pair{"Zelto", 1}, {"Marvo-KTC", 2}}) {
      bench.manager->SetVMNowName(name);
      QCOMPARE(list_changed.count(), ++changes);
      QCOMPARE(type_changed.count(), changes);
      QCOMPARE(bench.manager->connectType(), type);
      QCOMPARE(bench.manager->LidarModelList(), QVariantList{name});
    }
  }
};

const RegisterTest<ConnectionTest> registered;

}  // namespace

#include "connection_test.moc"
