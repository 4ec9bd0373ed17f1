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

  bool ConnectSmall() const {
    if (lines) {
      Type("rs485Field", QString::fromStdString(lines->rs485_path()));
      Enter("uartField", QString::fromStdString(lines->uart_path()));
    } else {
      Dial(network->port());
    }
    // The page asks for the destination as soon as it hears of the connection.
    const auto ready = [this] {
      return manager->IsConnected() && (lines || !Text("zeltoDestinationIpField").isEmpty());
    };
    return QTest::qWaitFor(ready, 15000);
  }
  void DropFile(const QString& file_name, const QByteArray& content) const {
    QFile file(folder.filePath(file_name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    Drop(QUrl::fromLocalFile(file.fileName()));
  }

  QTemporaryDir folder;
  std::unique_ptr<SimulatedSmallSensor> lines;
  std::unique_ptr<SimulatedSensor> network;
};

std::vector<std::uint8_t> Bytes(const QByteArray& content) {
  return {content.begin(), content.end()};
}

class SmallSensorWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void ShowsWhatTheSensorSays_data() {
    const Table<QString> row("version");
    row("Zelto", "1.0.3.0");
    row("Zelto-KTC", "1.0.3.0");
    row("Marvo-KTC", "1.4.2.0");
  }
  void ShowsWhatTheSensorSays() {
    QFETCH(QString, version);
    SmallDesk desk(QTest::currentDataTag());
    const bool ktc = desk.network != nullptr;
    const std::string serial_number =
        ktc ? desk.network->ValueText("SN") : desk.device().state.Items().serial_number;
    const auto destination = [&] {
      return desk.Text("zeltoDestinationIpField") + desk.Text("zeltoDestinationPortField");
    };
    for (int round = 0; round < 2; ++round) {
      QTRY_COMPARE(desk.Text("zeltoInfo_0"), "xxxxxxxx");
      QCOMPARE(desk.Has("zeltoDestinationIpField"), ktc);
      if (ktc) QCOMPARE(destination(), "");
      QVERIFY(desk.ConnectSmall());
      QTRY_COMPARE(desk.Text("zeltoInfo_0"), QString::fromStdString(serial_number));
      QTRY_COMPARE_WITH_TIMEOUT(desk.Text("zeltoVersion_0"), version, 10000);
      if (ktc) QTRY_COMPARE(destination(), "192.168.1.1002368");
      desk.Click("connectButton");
      QTRY_VERIFY(!desk.manager->IsConnected());
    }
  }

  void CheckFindsTheSensorAlive() {
    for (const char* model : {"Zelto", "Zelto-KTC"}) {
      SmallDesk desk(model);
      QVERIFY(desk.ConnectSmall());
      QSignalSpy checked(desk.manager, &VarkelManager::connectionCheckFinished);
      desk.manager->CheckConnectionInBackground();
      QVERIFY(checked.wait());
      QVERIFY(checked[0][0].toBool() && desk.manager->IsConnected());
      desk.lines ? desk.lines->Stop() : desk.network->Stop();
      QTRY_VERIFY_WITH_TIMEOUT(!desk.manager->IsConnected(), 15000);
    }
  }

  void SetsAndReadsOverKtc() {
    SmallDesk desk("Marvo-KTC");
    QVERIFY(desk.ConnectSmall());
    const auto items = [&] { return desk.device().state.Items(); };
    const auto succeeds = [&desk](const char* button, const char* notice) {
      desk.Press(button);
      return desk.NoticeShows("successWindow", notice) && desk.Dismiss("successWindow");
    };
    desk.Choose("zeltoStandbyCombo", 1);
    desk.Press("zeltoStandbySave");
    QTRY_VERIFY(items().standby);
    desk.Choose("zeltoReturnModeCombo", 1);
    desk.Press("zeltoReturnModeSave");
    QTRY_VERIFY(items().last_return);
    desk.Choose("zeltoAngularRangeCombo", 5);
    QVERIFY(succeeds("zeltoImuRangeSave", "IMU range set successfully"));
    QCOMPARE(int(items().angular_range), 8);

    desk.Type("zeltoBaudRateField", "3125000");
    QVERIFY(succeeds("zeltoBaudRateSave", "set baud rate successful"));
    desk.device().state.Change([](SmallSensorItems& held) {
      held.baud_rate = 115200;
      held.safety_state = 2;
      held.fault_codes = {0x12, 0x101};
    });
    desk.Press("zeltoBaudRateGet");
    QTRY_COMPARE(desk.Text("zeltoBaudRateField"), "115200");
    desk.Press("zeltoSafetyGet");
    QTRY_COMPARE(desk.Text("zeltoFaultState"), "Shutdown");
    QCOMPARE(desk.Property("zeltoFaultCodeCombo", "count").toInt(), 2);

    desk.Type("zeltoDestinationIpField", "10.1.2.3");
    desk.Type("zeltoDestinationPortField", "5000");
    QVERIFY(succeeds("zeltoDestinationSave", "set destination IP and port successful"));
    QCOMPARE(desk.network->ValueText("Destination IP"), "10.1.2.3");
    QCOMPARE(desk.network->ValueText("Destination Port"), "5000");

    QMetaObject::invokeMethod(desk.Find("zeltoCalibrationRow"), "save",
                              Q_ARG(QVariant, QUrl::fromLocalFile(desk.folder.path())));
    QTRY_VERIFY(desk.Text("zeltoCalibrationOutcome").startsWith("Saved as "));
    QFile saved(desk.folder.filePath(desk.Text("zeltoCalibrationOutcome").mid(9)));
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(Bytes(saved.readAll()), items().correction);
  }

  void UpgradesInTheChosenMode_data() {
    const Table<QString, int, bool> row("model", "mode", "junction_box");
    row("lines, application", "Zelto", 0, false);
    row("lines, PBL", "Zelto", 1, false);
    row("KTC, PBL", "Zelto-KTC", 1, false);
    row("junction box", "Marvo-KTC", 1, true);
  }
  void UpgradesInTheChosenMode() {
    QFETCH(QString, model);
    QFETCH(int, mode);
    QFETCH(bool, junction_box);
    SmallDesk desk(model);
    QVERIFY(desk.ConnectSmall());
    desk.Choose("zeltoUpgradeMode", mode);
    const QByteArray package(5000, 'z');
    desk.DropFile("firmware.bin", package);
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

  void MarvoTakesItsComponents() {
    SmallDesk desk("Marvo-KTC");
    QVERIFY(desk.ConnectSmall());
    desk.DropFile("short.bin", "QRNA");
    QVERIFY(desk.NoticeShows("errorWindow", "Upgrade package too small"));
    QVERIFY(desk.Dismiss("errorWindow"));
    const auto package = varkel::test::FullMarvoPackage();
    desk.DropFile("new.patch",
                  QByteArray(reinterpret_cast<const char*>(package.data()), int(package.size())));
    QVERIFY(
        desk.NoticeShows("successWindow", "Marvo upgrade completed. The lidar will automatically reboot."));
    const std::vector<ReceivedFirmware> received = desk.device().firmware.Received();
    QVERIFY(!received.empty() && received[0].is_component);
    QTRY_VERIFY(!desk.manager->IsConnected());
  }

  void SilentSensorKeepsTheWindowAlive() {
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
};
const RegisterTest<SmallSensorWindowTest> registration;

}  // namespace

#include "small_sensor_window_test.moc"
