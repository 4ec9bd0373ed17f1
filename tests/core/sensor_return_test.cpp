#include "VarkelCore/src/upgrade/sensor_return.h"

#include "tests/core/core_test.h"

namespace {

using namespace varkel;
using namespace std::chrono_literals;

constexpr char kTable[] = "./Config/varID/Quenta.csv";

struct NoReport : UserReport {
  void Log(const std::string&, const std::string&) override {}
  void Bytes(const std::string&) override {}
  void Error(const std::string&) override {}
  void Success(const std::string&) override {}
};

/// Waits for a sensor, with a short time-out.
struct SensorReturnFixture {
  explicit SensorReturnFixture(std::chrono::milliseconds limit)
      : back(workers, events, {report, log_bytes, activity}, [this] { ++connects; }, {limit, 10ms, 10ms}) {
    catalogue->ExtractConfigInfo();
    sensor.Start();
    port = sensor.port();
    QObject::connect(&back, &SensorReturn::ended, &back,
                     [this](const QString& text, bool is_back) { outcome = (is_back ? "+" : "-") + text; });
  }
  ~SensorReturnFixture() {
    events.Close();
    back.Cancel();
    workers.StopAndJoin();
  }
  void Await(const SensorIdentity& before) {
    ConnectionSettings settings;
    settings.ip_address = "127.0.0.1";
    settings.port = std::to_string(port);
    back.Await(settings, catalogue, before);
  }
  bool Ends() const {
    return ControllerFixture::Wait([this] { return !back.is_waiting(); });
  }

  NoReport report;
  ByteLogSwitch log_bytes = false;
  Activity activity{{[] {}, [] {}}};
  EventQueue events;
  WorkerThreads workers;
  const std::shared_ptr<ConfigParser> catalogue = std::make_shared<ConfigParser>(kTable);
  sim::SimulatedSensor sensor{{.table_path = kTable}};
  std::uint16_t port = 0;
  int connects = 0;
  QString outcome;
  SensorReturn back;
};

class SensorReturnTest : public QObject {
  Q_OBJECT
 private slots:
  void OnlyTheUpgradedSensorIsConnected_data() {
    QTest::addColumn<QString>("serial_number");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("outcome");
    QTest::newRow("new version")
        << "QU64A2419C0087"
        << "3.4.11.0"
        << "+The sensor is back after the upgrade.\nFPGA Version: 3.4.11.0 → 1.9.3.7 "
           "(2024-08-02)";
    QTest::newRow("same version")
        << "QU64A2419C0087"
        << "1.9.3.7 (2024-08-02)"
        << "+The sensor is back after the upgrade.\nIts versions are those from before.";
    QTest::newRow("a table without serial numbers")
        << ""
        << "1.9.3.7 (2024-08-02)"
        << "+The sensor is back after the upgrade.\nIts versions are those from before.";
    QTest::newRow("another sensor")
        << "QU1"
        << "1"
        << "-Another sensor (SN QU64A2419C0087) answers at 127.0.0.1 after the upgrade "
           "of SN QU1, so it was not connected.";
  }
  void OnlyTheUpgradedSensorIsConnected() {
    QFETCH(QString, serial_number);
    QFETCH(QString, version);
    SensorReturnFixture fixture(20s);
    fixture.Await({serial_number.toStdString(), {{"FPGA Version", version.toStdString()}}});
    QVERIFY(fixture.Ends());
    QTEST(fixture.outcome, "outcome");
    QCOMPARE(fixture.connects, fixture.outcome.startsWith('+') ? 1 : 0);
  }

  void SensorThatIsStillBootingIsAskedAgain() {
    SensorReturnFixture fixture(20s);
    fixture.sensor.AddFault("0x07=error:9");  // answers, but not with its serial number
    fixture.Await({"QU64A2419C0087", {}});
    QVERIFY(fixture.sensor.WaitReceived(7, 4, 20s));
    QVERIFY(fixture.back.is_waiting());
    fixture.sensor.ClearFaults();
    QVERIFY(fixture.Ends());
    QCOMPARE(fixture.connects, 1);
  }

  void WaitEndsOnTimeOutOrByTheUser() {
    SensorReturnFixture fixture(1ms);
    fixture.sensor.Stop();
    fixture.Await({"QU64A2419C0087", {}});
    QVERIFY(fixture.Ends());
    QCOMPARE(fixture.outcome,
             QString("-The sensor has not come back within 1 s after the upgrade. Check its power and its "
                     "address, then connect."));
    SensorReturnFixture ended(20s);
    ended.sensor.AddFault("0x07=late:300");
    ended.Await({"QU64A2419C0087", {}});
    QVERIFY(ended.sensor.WaitReceived(7, 1, 20s));
    ended.back.Cancel();
    ended.workers.StopAndJoin();
    ControllerFixture::Wait([] { return true; });  // runs events that the wait still posted
    QVERIFY(ended.outcome.isEmpty() && ended.back.text().isEmpty());
    QCOMPARE(ended.connects, 0);
  }
};

const RegisterTest<SensorReturnTest> register_sensor_return_test;

}  // namespace

#include "sensor_return_test.moc"
