#include "VarkelCore/src/session/connection_check.h"
#include "VarkelCore/src/session/session_disconnect.h"
#include "tests/core/core_test.h"
#include "tests/support/wine.h"

namespace {

using namespace varkel;

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void FailuresAreReported() {
    // Where to connect, what the user is asked to check, and why. "same": one port for both lines.
    const QStringList cases[] = {
        {"Quenta", "127.0.0.1", "1", "network settings", "TCP connection failed."},
        {"Quenta", "127.0.0.1", "ktc", "network settings", "invalid stoi argument"},
        {"Quenta", "127.0.0.1", "99999999999", "network settings", "stoi argument out of range"},
        {"Zelto-KTC", "127.0.0.1", "1", "network settings", "TCP connection failed."},
        {"Zelto", "/dev/none", "/dev/none", "RS485 serial port", "RS485 serial open fail"},
        {"Zelto", "", "same", "UART serial port", "UART serial open fail"}};
    for (const QStringList& texts : cases) {
      if (kUnderWine && texts[2] == "same") continue;  // Wine allows a serial port to be opened twice
      ControllerFixture fixture({}, texts[0].toStdString());
      VarkelManager& manager = *fixture.manager;
      const QString rs485 = manager.serial_port_485();
      const bool lines = texts[0] == "Zelto";
      const QString first = !texts[1].isEmpty() ? texts[1] : rs485;
      const QString second = texts[2] == "same" ? rs485 : texts[2];
      lines ? manager.set_serial_port_485(first) : manager.set_ip_address(first);
      lines ? manager.set_serial_port_232(second) : manager.set_port(second);
      QVERIFY(manager.ConnectLidar());
      QCOMPARE(fixture.NextError(), "Connection Failed. Please check your " + texts[3] + ".");
      QTRY_COMPARE(fixture.log, QStringList{"ERROR Connection Error: " + texts[4]});
      QTRY_VERIFY(!manager.GetIsConnectingLidar());
      QVERIFY(!manager.IsConnected());
      if (!lines) continue;
      manager.set_serial_port_485(rs485);
      manager.set_serial_port_232(QString::fromStdString(fixture.on_lines->uart_path()));
      QVERIFY(fixture.Connect());  // the line that was opened is free again
    }
  }

  void SecondAttemptIsRefusedWhileOneRuns() {
    ControllerFixture fixture({"0x07=late:1500"});
    QVERIFY(fixture.manager->ConnectLidar());
    QTRY_VERIFY(fixture.manager->GetIsConnectingLidar());
    QVERIFY(!fixture.manager->ConnectLidar());
    QTRY_VERIFY(fixture.manager->IsConnected());
  }

  void DisconnectForgetsTheSerialNumber() {
    ControllerFixture fixture;
    QSignalSpy connected_changed(fixture.manager.get(), &VarkelManager::isConnectedChanged);
    QSignalSpy map_changed(fixture.manager.get(), &VarkelManager::myMapChanged);
    QVERIFY(fixture.Connect());
    QCOMPARE(map_changed.count(), 1);
    QCOMPARE(fixture.log, QStringList{"INFO Lidar connected"});
    fixture.manager->GetLidarModuleInfo(0);
    QCOMPARE(fixture.manager->getLidarSN(), QString::fromStdString(fixture.sensor->ValueText("SN")));
    fixture.Edit("Subnet Mask", "255.255.0.0");
    QCOMPARE(fixture.manager->getSetMapSize(), 1);
    fixture.manager->Stop();
    QCOMPARE(fixture.manager->getLidarSN(), "xxxxxxxx");
    QCOMPARE(fixture.manager->getSetMapSize(), 0);
    QVERIFY(!fixture.manager->IsConnected());
    QCOMPARE(connected_changed.count(), 2);
    QCOMPARE(map_changed.count(), 3);
    QCOMPARE(fixture.log.last(), "INFO Lidar disconnected");
    QTRY_COMPARE(fixture.sensor->connected_clients(), 0U);
    QVERIFY(!fixture.manager->CheckLidarConnection());
    QVERIFY(fixture.Connect());
  }

  void ByteFlowLeavesProbesOut() {
    ControllerFixture fixture;
    fixture.manager->SetLogBytesFlowStatus(true);
    QVERIFY(fixture.ConnectOn());
    QVERIFY(fixture.manager->CheckLidarConnection());
    QCOMPARE(fixture.log, QStringList{"INFO Lidar connected"});
    QVERIFY(fixture.manager->UpdateSingleVarInfo("Calibration Count"));
    QTRY_COMPARE(fixture.log.size(), 3);
    QCOMPARE(fixture.log[1], "BYTES SEND: 47 74 0c 00 00 00 00 00 ");
    QVERIFY2(fixture.log[2].startsWith("BYTES RECV: "), qPrintable(fixture.log[2]));
  }

  void OneBackgroundCheckAtATime() {
    const SensorConnection connection;
    EventQueue events;
    WorkerThreads workers;
    int finished = 0;
    ConnectionCheck check(connection, workers, events, [&finished](bool answers) {
      QVERIFY(!answers);
      ++finished;
    });
    for (int i = 0; i < 3; ++i) check.Start();
    QVERIFY(ControllerFixture::Wait([&finished] { return finished > 0; }));
    for (int i = 0; i < 3; ++i) check.Start();
    workers.StopAndJoin();
    ControllerFixture::Wait([] { return true; });  // runs what the checks have posted
    QCOMPARE(finished, 2);
  }

  void LeavingASessionKeepsTheNextOne() {
    EventQueue events;
    const Activity activity{{[] {}, [] {}}};
    SensorConnection connection;
    const auto connect = [&](const std::function<void()>& meanwhile = [] {}) {
      auto session = std::make_shared<SensorSession>(
          SensorSession::Lines{}, nullptr, activity,
          SensorSession::Periodic{std::chrono::hours(1), [](SensorSession&, const std::stop_token&) {}});
      const auto make = [&](const std::stop_token&) {
        meanwhile();
        return SessionResult(session);
      };
      connection.Connect({}, make, {[] {}, [](const ConnectFailure&) {}});
      return session;
    };
    QStringList calls;
    const SessionDisconnect disconnect(connection, events, [&] {
      calls.append("disconnect");
      connection.End();
    });
    const auto earlier = connect();
    const auto present = connect();
    for (const auto& session : {earlier, present, present}) {
      disconnect.Leave(session, [&calls] { calls.append("after"); });
      QCOMPARE(calls, session == earlier ? QStringList() : (QStringList{"disconnect", "after"}));
    }
    connect([&connection] { connection.End(); });
    QVERIFY2(connection.session() == nullptr, "a session that the user has left while it was being made");
  }

  void SmallSensorInsideKtc() {
    ControllerFixture fixture({"0x07=error:3"}, "Marvo-KTC");  // either command proves that it is present
    fixture.manager->set_baud_rate("3125000");
    QVERIFY(fixture.Connect());
    const auto rate = fixture.sensor->Received(0xFF).front().payload;
    QCOMPARE(rate, (std::vector<std::uint8_t>{0, 1, 0x39, 0x00, 0x2F, 0xAF, 0x08}));
    fixture.manager->SetLogBytesFlowStatus(true);
    QVERIFY(fixture.manager->CheckLidarConnection());
    for (const bool silent : {true, false}) {
      QCOMPARE(fixture.manager->ZeltoGetDestinationConfig(silent).size(), 2);
      QTRY_COMPARE(fixture.log.filter("BYTES SEND: 47 74 08").size(), silent ? 0 : 1);
    }
    fixture.manager->Stop();
    QVERIFY(!fixture.manager->CheckLidarConnection());
  }

  void SmallSensorOnLines() {
    ControllerFixture fixture({}, "Zelto");
    VarkelManager& manager = *fixture.manager;
    const unsigned rate = kUnderWine ? 115200 : 3125000;  // Wine sets only the usual rates
    manager.set_baud_rate(QString::number(rate));
    for (int round = 0; round < 2; ++round) {
      QVERIFY(fixture.Connect());
      QCOMPARE(fixture.on_lines->rs485_rate(), rate);
      QCOMPARE(fixture.on_lines->uart_rate(), 9600U);
      manager.ZeltoSetStandby(1);  // needs KTC
      QCOMPARE(fixture.NextError(), "lidar is not connected, or lidar is upgrade");
      // Hosts switch to KTC this way, so it happens even if the function is refused.
      QCOMPARE(manager.connectType(), 2);
      manager.SendCommand("02", "0A 01");  // the serial number
      QVERIFY2(fixture.errors.isEmpty(), qPrintable(fixture.errors.join('\n')));
      QVERIFY(manager.getSendKtcCommandReturnHeader().startsWith("24 4C 44 43 4D 44 2C "));
      QVERIFY(manager.CheckLidarConnection());
      manager.Stop();
      QCOMPARE(manager.connectType(), 1);
      QVERIFY(!manager.CheckLidarConnection());
    }
  }

  void StopEndsAnAttemptWithoutANotice() {
    for (const char* model : {"Quenta", "Zelto-KTC", "Zelto"}) {
      ControllerFixture fixture({"*=silence"}, model);
      QVERIFY(fixture.manager->ConnectLidar());
      QTRY_VERIFY(fixture.manager->GetIsConnectingLidar() || fixture.manager->IsConnected());
      fixture.manager->Stop();
      QVERIFY(!fixture.manager->GetIsConnectingLidar() && !fixture.manager->IsConnected());
      fixture.log.clear();
      fixture.ClearFaults();
      QVERIFY(fixture.Connect());  // at once: the attempt keeps no port and no socket
      QVERIFY2(fixture.errors.isEmpty(), qPrintable(fixture.errors.join('\n')));
      QVERIFY2(fixture.log.filter("Connection Error").isEmpty(), qPrintable(fixture.log.join('\n')));
    }
  }
};

const RegisterTest<ConnectionTest> register_connection_test;

}  // namespace

#include "connection_test.moc"
