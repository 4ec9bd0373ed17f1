#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/marvo_sample.h"
#include "tests/ui/ui_test.h"

namespace {

using varkel::sim::ReceivedFirmware;
using varkel::sim::SimulatedSensor;
using varkel::sim::SimulatedSmallSensor;
using varkel::sim::SmallSensorDevice;
using varkel::sim::SmallSensorItems;

/// The window with the page of a small sensor, and that sensor.
class SmallDesk : public Desk {
 public:
  explicit SmallDesk(const QString& model) : Desk({}, model) {
    if (model == "Zelto") {
      lines = std::make_unique<SimulatedSmallSensor>();
      lines->Start();
    } else {
      network = std::make_unique<SimulatedSensor>(
          varkel::sim::SensorOptions{.table_path = "./Config/varID/" + model.toStdString() + ".csv"});
      network->Start();
    }
  }
  /// The connection ends ahead of the sensor.
  ~SmallDesk() { manager->Stop(); }

  SmallSensorDevice& device() const { return lines ? lines->device() : network->device(); }

  void DialSmall() const {
    if (lines) {
      Type("rs485Field", QString::fromStdString(lines->rs485_path()));
      Enter("uartField", QString::fromStdString(lines->uart_path()));
    } else {
      Dial(network->port());
    }
  }
  bool ConnectSmall() const {
    DialSmall();
    return QTest::qWaitFor([this] { return manager->IsConnected() && HasDestination(); }, 15000);
  }
  /// Scrolls the button into view and clicks it, once it is ready for that.
  void Press(const QString& name) const {
    QQuickItem* const button = Find(name);
    button->forceActiveFocus(Qt::TabFocusReason);
    if (!QTest::qWaitFor([button] { return button->isEnabled(); }, 15000)) {
      qFatal("%s stays disabled", qPrintable(name));
    }
    Click(name);
  }
  void Choose(const QString& name, int index) const {
    QQuickItem* const combo = Find(name);
    combo->forceActiveFocus(Qt::TabFocusReason);
    while (combo->property("currentIndex").toInt() != index) {
      Key(combo->property("currentIndex").toInt() < index ? Qt::Key_Down : Qt::Key_Up);
    }
  }
  void CloseNotice(const QString& name) const {
    Key(Qt::Key_Return);
    QTRY_VERIFY(!Notice(name)->property("visible").toBool());
  }
  void Drop(const QString& file_name, const QByteArray& content) const {
    QFile file(folder.filePath(file_name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QMetaObject::invokeMethod(Find("upgradeDrop"), "dropped",
                              Q_ARG(QUrl, QUrl::fromLocalFile(file.fileName())));
  }

  QTemporaryDir folder;
  std::unique_ptr<SimulatedSmallSensor> lines;
  std::unique_ptr<SimulatedSensor> network;

 private:
  /// The page asks for it as soon as it hears of the connection.
  bool HasDestination() const { return lines || !Text("zeltoDestinationIpField").isEmpty(); }
};

std::vector<std::uint8_t> Bytes(const QByteArray& content) {
  return {content.begin(), content.end()};
}

class SmallSensorWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void ShowsWhatTheSensorSays_data();
  void ShowsWhatTheSensorSays();
  void CheckFindsTheSensorAlive_data();
  void CheckFindsTheSensorAlive();
  void SetsAndReadsOverKtc_data();
  void SetsAndReadsOverKtc();
  void RefusedOverSerialLines();
  void UpgradesInTheChosenMode_data();
  void UpgradesInTheChosenMode();
  void MarvoTakesItsComponents();
  void SilentSensorKeepsTheWindowAlive();
};
const RegisterTest<SmallSensorWindowTest> registration;

void SmallSensorWindowTest::ShowsWhatTheSensorSays_data() {
  QTest::addColumn<QString>("version");
  QTest::newRow("Zelto") << "1.0.3.0";
  QTest::newRow("Zelto-KTC") << "1.0.3.0";
  QTest::newRow("Marvo-KTC") << "1.4.2.0";
}

void SmallSensorWindowTest::ShowsWhatTheSensorSays() {
  QFETCH(QString, version);
  SmallDesk desk(QTest::currentDataTag());
  const bool ktc = desk.network != nullptr;
  QCOMPARE(desk.Text("zeltoInfo_0"), "xxxxxxxx");
  QVERIFY(desk.ConnectSmall());
  const std::string serial_number =
      ktc ? desk.network->ValueText("SN") : desk.device().state.Items().serial_number;
  QTRY_COMPARE(desk.Text("zeltoInfo_0"), QString::fromStdString(serial_number));
  QTRY_COMPARE_WITH_TIMEOUT(desk.Text("zeltoVersion_0"), version, 10000);
  QCOMPARE(desk.Has("zeltoDestinationIpField"), ktc);
  if (ktc) {
    QTRY_COMPARE(desk.Text("zeltoDestinationIpField"), "192.168.1.100");
    QCOMPARE(desk.Text("zeltoDestinationPortField"), "2368");
  }
  desk.Click("connectButton");
  QTRY_VERIFY(!desk.manager->IsConnected());
  QTRY_COMPARE(desk.Text("zeltoInfo_0"), "xxxxxxxx");
  if (ktc) {
    QCOMPARE(desk.Text("zeltoDestinationIpField") + desk.Text("zeltoDestinationPortField"), "");
  }
}

void SmallSensorWindowTest::CheckFindsTheSensorAlive_data() {
  QTest::addColumn<QString>("model");
  QTest::newRow("lines") << "Zelto";
  QTest::newRow("KTC") << "Zelto-KTC";
}

void SmallSensorWindowTest::CheckFindsTheSensorAlive() {
  QFETCH(QString, model);
  SmallDesk desk(model);
  QVERIFY(desk.ConnectSmall());
  QSignalSpy checked(desk.manager, &VarkelManager::connectionCheckFinished);
  desk.manager->CheckConnectionInBackground();
  QVERIFY(checked.wait());
  QVERIFY(checked[0][0].toBool());
  QVERIFY(desk.manager->IsConnected());
  desk.lines ? desk.lines->Stop() : desk.network->Stop();
  QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->IsConnected(), 15000);
}

void SmallSensorWindowTest::SetsAndReadsOverKtc_data() {
  QTest::addColumn<bool>("imu");
  QTest::newRow("Zelto-KTC") << false;
  QTest::newRow("Marvo-KTC") << true;
}

void SmallSensorWindowTest::SetsAndReadsOverKtc() {
  QFETCH(bool, imu);
  SmallDesk desk(QTest::currentDataTag());
  QVERIFY(desk.ConnectSmall());
  const auto items = [&] { return desk.device().state.Items(); };

  desk.Choose("zeltoStandbyCombo", 1);
  desk.Press("zeltoStandbySave");
  QTRY_VERIFY(items().standby);
  desk.Press("zeltoSpinRateSave");  // as shown, "5hz"
  QTRY_VERIFY(items().spin_rate == 0);
  desk.Choose("zeltoReturnModeCombo", 1);
  desk.Press("zeltoReturnModeSave");
  QTRY_VERIFY(items().last_return);
  if (imu) {
    desk.Choose("zeltoAngularRangeCombo", 5);
    desk.Choose("zeltoAccelerationRangeCombo", 2);
    desk.Press("zeltoImuRangeSave");
    QVERIFY(desk.NoticeShows("successWindow", "IMU range set successfully"));
    QCOMPARE(int(items().angular_range), 8);
    QCOMPARE(int(items().accel_range), 2);
    desk.CloseNotice("successWindow");
  }

  desk.Type("zeltoBaudRateField", "3125000");
  desk.Press("zeltoBaudRateSave");
  QVERIFY(desk.NoticeShows("successWindow", "set baud rate successful"));
  desk.CloseNotice("successWindow");
  desk.device().state.Change([](SmallSensorItems& held) { held.baud_rate = 115200; });
  desk.Press("zeltoBaudRateGet");
  QTRY_COMPARE(desk.Text("zeltoBaudRateField"), "115200");

  desk.device().state.Change([](SmallSensorItems& held) {
    held.safety_state = 2;
    held.fault_codes = {0x12, 0x101};
  });
  desk.Press("zeltoSafetyGet");
  QTRY_COMPARE(desk.Text("zeltoFaultState"), "Shutdown");
  QCOMPARE(desk.Find("zeltoFaultCodeCombo")->property("count").toInt(), 2);

  desk.Type("zeltoDestinationIpField", "10.1.2.3");
  desk.Type("zeltoDestinationPortField", "70000");
  desk.Press("zeltoDestinationSave");
  QVERIFY(desk.NoticeShows("errorWindow", "set destination IP and port error, ret:"));
  desk.CloseNotice("errorWindow");
  desk.Type("zeltoDestinationPortField", "5000");
  desk.Press("zeltoDestinationSave");
  QVERIFY(desk.NoticeShows("successWindow", "set destination IP and port successful"));
  desk.CloseNotice("successWindow");
  QCOMPARE(desk.network->ValueText("Destination IP"), "10.1.2.3");
  QCOMPARE(desk.network->ValueText("Destination Port"), "5000");

  QMetaObject::invokeMethod(desk.Find("zeltoCalibrationRow"), "save",
                            Q_ARG(QVariant, QUrl::fromLocalFile(desk.folder.path())));
  QTRY_VERIFY(desk.Text("zeltoCalibrationOutcome").startsWith("Saved as "));
  QFile saved(desk.folder.filePath(desk.Text("zeltoCalibrationOutcome").mid(9)));
  QVERIFY(saved.open(QIODevice::ReadOnly));
  QCOMPARE(Bytes(saved.readAll()), items().correction);

  desk.Enter("commandCodeField", "0x07");
  QTRY_VERIFY(desk.Has("historyRow_0"));
}

// The serial lines have no KTC, which these functions need.
void SmallSensorWindowTest::RefusedOverSerialLines() {
  SmallDesk desk("Zelto");
  QVERIFY(desk.ConnectSmall());
  desk.Press("zeltoBaudRateGet");
  QVERIFY(desk.NoticeShows("errorWindow", "GetBaudRate is only supported in KTC serial mode"));
  desk.CloseNotice("errorWindow");
  QCOMPARE(desk.Text("zeltoBaudRateField"), "");
}

void SmallSensorWindowTest::UpgradesInTheChosenMode_data() {
  QTest::addColumn<QString>("model");
  QTest::addColumn<int>("mode");
  QTest::addColumn<bool>("junction_box");
  QTest::newRow("lines, application") << "Zelto" << 0 << false;
  QTest::newRow("lines, PBL") << "Zelto" << 1 << false;
  QTest::newRow("KTC, PBL") << "Zelto-KTC" << 1 << false;
  QTest::newRow("junction box") << "Marvo-KTC" << 1 << true;
}

void SmallSensorWindowTest::UpgradesInTheChosenMode() {
  QFETCH(QString, model);
  QFETCH(int, mode);
  QFETCH(bool, junction_box);
  SmallDesk desk(model);
  QVERIFY(desk.ConnectSmall());
  desk.Choose("zeltoUpgradeMode", mode);
  const QByteArray package(5000, 'z');
  desk.Drop("firmware.bin", package);
  QTRY_VERIFY(desk.Has("upgradeProgress"));
  QVERIFY(desk.NoticeShows("successWindow", "Upgrade package transmitted successfully."));
  QTRY_VERIFY(!desk.Has("upgradeProgress"));
  if (junction_box) {
    QCOMPARE(desk.network->ReceivedPackage(), Bytes(package));
    return;
  }
  const std::vector<ReceivedFirmware> received = desk.device().firmware.Received();
  QCOMPARE(received.size(), 1U);
  QCOMPARE(received[0].bytes, Bytes(package));
  QCOMPARE(int(received[0].purpose), mode);
}

void SmallSensorWindowTest::MarvoTakesItsComponents() {
  SmallDesk desk("Marvo-KTC");
  QVERIFY(desk.ConnectSmall());
  desk.Drop("short.bin", "QRNA");
  QVERIFY(desk.NoticeShows("errorWindow", "Upgrade package too small"));
  desk.CloseNotice("errorWindow");
  const auto package = varkel::test::FullMarvoPackage();
  desk.Drop("new.patch", QByteArray(reinterpret_cast<const char*>(package.data()), int(package.size())));
  QVERIFY(desk.NoticeShows("successWindow", "Marvo upgrade completed. The lidar will automatically reboot."));
  const std::vector<ReceivedFirmware> received = desk.device().firmware.Received();
  QVERIFY(!received.empty() && received[0].is_component);
  QTRY_VERIFY(!desk.manager->IsConnected());
}

void SmallSensorWindowTest::SilentSensorKeepsTheWindowAlive() {
  SmallDesk desk("Zelto-KTC");
  QVERIFY(desk.ConnectSmall());
  desk.network->Misbehave("ldcmd-set:10=silence");
  desk.Press("zeltoSpinRateSave");
  QTRY_VERIFY(desk.Has("loadingBar"));
  QVERIFY(!desk.Find("zeltoBaudRateGet")->isEnabled());
  desk.Type("zeltoBaudRateField", "9600");  // the window takes keys meanwhile
  QCOMPARE(desk.Text("zeltoBaudRateField"), "9600");
  desk.Click("connectButton");
  QTRY_VERIFY(!desk.manager->IsConnected());  // a silent sensor can be walked away from
  QTRY_VERIFY(desk.Find("zeltoBaudRateGet")->isEnabled());
}

}  // namespace

#include "small_sensor_window_test.moc"
