#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>

#include "tests/core/marvo_sample.h"
#include "tests/ui/window_driver.h"

namespace {

using varkel::sim::SmallSensorDevice;
using varkel::sim::SmallSensorItems;

/// The window with a small sensor's page, and that sensor.
class SmallSensorPageDriver : public WindowDriver {
 public:
  explicit SmallSensorPageDriver(const QString& model)
      : WindowDriver(model), device(model == "Zelto" ? lines.device() : sensor.device()) {}

  QString Destination() const {
    return Text("zeltoDestinationIpField") + ':' + Text("zeltoDestinationPortField");
  }
  /// The sensor's settings.
  QMap<QString, int> Held() const {
    const SmallSensorItems items = device.state.Items();
    return {{"standby", items.standby},
            {"spin rate", items.spin_rate},
            {"last return", items.last_return},
            {"angular range", items.angular_range},
            {"acceleration range", items.accel_range},
            {"baud rate", static_cast<int>(items.baud_rate)},
            {QString::fromStdString(sensor.ValueText("Destination IP")),
             std::stoi(sensor.ValueText("Destination Port"))}};
  }
  void Set(const QString& control, const QString& value) const {
    if (!control.endsWith("Combo")) return Type(control, value);
    Choose(control, Property(control, "model").toStringList().indexOf(value));
  }
  void Wait() const {
    const bool ended = QTest::qWaitFor([this] { return !manager->isWorking(); }, kPatienceMs);
    if (!ended) qFatal("a call takes too long");
  }
  SmallSensorDevice& device;
};

class SmallSensorPageTest : public QObject {
  Q_OBJECT
 private slots:
  void ModelsHaveTheirRowsAndInformation() {
    const struct {
      const char* model;
      bool imu, destination;
      QStringList modes;
      const char* version;
    } cases[] = {{"Zelto", false, false, {"APP+FPGA", "PBL"}, "1.0.3.0"},
                 {"Zelto-KTC", false, true, {"APP+FPGA", "PBL"}, "1.0.3.0"},
                 {"Marvo-KTC", true, true, {"Lidar", "Junction Box"}, "1.4.2.0"}};
    for (const auto& [model, imu, destination, modes, version] : cases) {
      SmallSensorPageDriver driver(model);
      QCOMPARE(driver.Has("zeltoImuRangeSave"), imu);
      QCOMPARE(driver.Has("zeltoDestinationSave"), destination);
      QCOMPARE(driver.Property("zeltoUpgradeMode", "model").toStringList(), modes);
      const QQuickItem* const field = driver.Find("zeltoInfo_0");
      EVENTUALLY_COMPARE(driver.Text("zeltoInfo_0"), "xxxxxxxx");
      QVERIFY(driver.Connect());
      EVENTUALLY_VERIFY(driver.Text("zeltoInfo_0") != "xxxxxxxx");
      EVENTUALLY_COMPARE(driver.Text("zeltoVersion_0"), version);
      if (destination) EVENTUALLY_COMPARE(driver.Destination(), "192.168.1.100:2368");
      driver.Press("connectButton");
      EVENTUALLY_VERIFY(!driver.manager->IsConnected());
      EVENTUALLY_COMPARE(driver.Text("zeltoInfo_0"), "xxxxxxxx");
      if (destination) QCOMPARE(driver.Destination(), ":");
      QCOMPARE(driver.Find("zeltoInfo_0"), field);  // the same item, so that a selection is kept
    }
  }

  void ControlsReachTheSensor() {
    const struct {
      const char* button;
      QMap<QString, QString> inputs;
      QMap<QString, int> held;
      const char* notice = nullptr;
    } cases[] = {{"zeltoStandbySave", {{"zeltoStandbyCombo", "Standby"}}, {{"standby", 1}}},
                 {"zeltoStandbySave", {{"zeltoStandbyCombo", "In Operation"}}, {{"standby", 0}}},
                 {"zeltoSpinRateSave", {{"zeltoSpinRateCombo", "10hz"}}, {{"spin rate", 1}}},
                 {"zeltoReturnModeSave", {{"zeltoReturnModeCombo", "Last"}}, {{"last return", 1}}},
                 {"zeltoImuRangeSave",
                  {{"zeltoAngularRangeCombo", "±4000 dps"}, {"zeltoAccelerationRangeCombo", "±2g"}},
                  {{"angular range", 8}, {"acceleration range", 3}},
                  "IMU range set successfully"},
                 {"zeltoBaudRateSave",
                  {{"zeltoBaudRateField", "3125000"}},
                  {{"baud rate", 3125000}},
                  "set baud rate successful"},
                 {"zeltoDestinationSave",
                  {{"zeltoDestinationIpField", "10.1.2.3"}, {"zeltoDestinationPortField", "5000"}},
                  {{"10.1.2.3", 5000}},
                  "set destination IP and port successful"}};
    SmallSensorPageDriver driver("Marvo-KTC");
    QVERIFY(driver.Connect());
    EVENTUALLY_VERIFY(driver.Destination() != ":");
    for (const auto& [button, inputs, held, notice] : cases) {
      for (const QString& control : inputs.keys()) driver.Set(control, inputs[control]);
      driver.Press(button);
      QVERIFY2(notice == nullptr || driver.Dismiss("successWindow", notice), button);
      for (const QString& item : held.keys()) EVENTUALLY_COMPARE(driver.Held().value(item, -1), held[item]);
    }
    for (const char* port : {"70000", "99999999999", "xx", "23a", ""}) {
      driver.Set("zeltoDestinationPortField", port);
      driver.Press("zeltoDestinationSave");
      QVERIFY2(driver.Dismiss("errorWindow", "set destination IP and port error"), port);
    }
    QCOMPARE(driver.Held().value("10.1.2.3"), 5000);
    driver.Set("zeltoBaudRateField", "");
    driver.Press("zeltoBaudRateSave");
    QVERIFY(!driver.manager->isWorking());
  }

  void AnswersAreShownAndFailuresChangeNothing() {
    SmallSensorPageDriver driver("Marvo-KTC");
    const auto shown_after = [&](const char* misbehaviour, std::uint8_t state,
                                 std::vector<std::uint16_t> codes) {
      driver.device.state.Change([&](SmallSensorItems& items) {
        items.baud_rate = 115200 + state;
        items.safety_state = state;
        items.fault_codes = std::move(codes);
      });
      driver.sensor.AddFault(misbehaviour);
      for (const char* button : {"zeltoBaudRateGet", "zeltoSafetyGet"}) driver.Press(button);
      driver.Wait();
      return driver.Text("zeltoBaudRateField") + ' ' + driver.Text("zeltoFaultState") + ' ' +
             driver.Property("zeltoFaultCodeCombo", "model").toStringList().join(',');
    };
    QVERIFY(driver.Connect());
    QCOMPARE(driver.Text("zeltoFaultState"), "Normal");
    QCOMPARE(shown_after("*=none", 2, {0x12, 0x101}), "115202 Shutdown 0x0012,0x0101");
    QCOMPARE(shown_after("*=none", 1, {}), "115201 Warning None");
    QCOMPARE(shown_after("*=error", 2, {0x12}), "115201 Warning None");

    const auto save_calibration = [&] {
      QMetaObject::invokeMethod(driver.Find("zeltoCalibrationRow"), "save",
                                Q_ARG(QVariant, QUrl::fromLocalFile(driver.folder.filePath("100% ä #1"))));
      driver.Wait();
      return driver.Text("zeltoCalibrationOutcome");
    };
    QVERIFY(QDir(driver.folder.path()).mkdir("100% ä #1"));
    QVERIFY(save_calibration().startsWith("get calibration error, ret:"));
    driver.sensor.ClearFaults();
    const QString outcome = save_calibration();
    QVERIFY(QRegularExpression("^Saved as correction_20\\d{6}-\\d{6}\\.bin, [0-9:]{8}$")
                .match(outcome)
                .hasMatch());
    QFile saved(driver.folder.filePath("100% ä #1/" + outcome.mid(9).section(',', 0, 0)));
    QVERIFY(saved.open(QIODevice::ReadOnly));
    const QByteArray content = saved.readAll();
    QCOMPARE(std::vector<std::uint8_t>(content.begin(), content.end()),
             driver.device.state.Items().correction);
    const std::pair<const char*, const char*> places[] = {{"file:///C:/data", "C:/data"},
                                                          {"file://server/share", "//server/share"}};
    for (const auto& [url, path] : places) {
      QVariant local;
      QMetaObject::invokeMethod(driver.Find("zeltoCalibrationRow"), "localPath",
                                Q_RETURN_ARG(QVariant, local), Q_ARG(QVariant, QUrl(url)));
      QCOMPARE(local, path);
    }
  }

  void OutcomesAppearBesideTheirRows() {
    SmallSensorPageDriver driver("Zelto-KTC");
    const auto outcome = [&](const char* name) {
      return driver.Text(QString(name) + "Outcome").section(' ', 0, 3);
    };
    QVERIFY(driver.Connect());
    QCOMPARE(driver.Property("zeltoStandbyCombo", "displayText").toString(), "not read");
    QCOMPARE(outcome("zeltoSafety"), "not read");
    driver.Press("zeltoStandbySave");  // nothing is chosen
    QCOMPARE(outcome("zeltoStandby"), "Choose a value first");
    driver.Choose("zeltoStandbyCombo", 1);
    QVERIFY(driver.Property("zeltoStandbyCombo", "marked").toBool());
    driver.Press("zeltoStandbySave");
    EVENTUALLY_VERIFY(outcome("zeltoStandby").startsWith("Saved "));
    QVERIFY(!driver.Property("zeltoStandbyCombo", "marked").toBool());
    driver.Press("zeltoSafetyGet");
    EVENTUALLY_VERIFY(outcome("zeltoSafety").startsWith("Read "));
    driver.sensor.AddFault("*=error");
    driver.Choose("zeltoStandbyCombo", 0);
    driver.Press("zeltoStandbySave");
    EVENTUALLY_COMPARE(outcome("zeltoStandby"), "set lidar mode error,");
    QVERIFY(driver.Dismiss("errorWindow", "set lidar mode error"));
    QVERIFY(driver.Property("zeltoStandbyCombo", "marked").toBool());  // the sensor did not accept it
    driver.sensor.ClearFaults();
    driver.manager->Stop();
    QCOMPARE(driver.Property("zeltoStandbyCombo", "displayText").toString(), "not read");
    QCOMPARE(outcome("zeltoStandby") + outcome("zeltoSafety"), "not read");
  }

  void FunctionsAreDisabledWithoutKtcAndSectionsAreListed() {
    const SmallSensorPageDriver driver("Zelto");
    QVERIFY(driver.Has("zeltoFunctionsRest") && !driver.Find("zeltoBaudRateGet")->isEnabled());
    driver.Key(Qt::Key_5, Qt::ControlModifier);  // "Send Command", the last one
    EVENTUALLY_VERIFY(driver.Property("section_4", "current").toBool());
    const auto* const view = driver.Find("zeltoView");
    QVERIFY(view->property("atYEnd").toBool());
    driver.Click("section_0");
    QCOMPARE(view->property("contentY").toInt(), 0);
  }

  void DestinationIsReadAgain() {
    SmallSensorPageDriver driver("Zelto-KTC");
    const auto ask = [&] { emit driver.manager->connectTypeChanged(); };
    QVERIFY(driver.Connect());
    EVENTUALLY_COMPARE(driver.Destination(), "192.168.1.100:2368");
    driver.Type("zeltoDestinationPortField", "77");  // kept until the user finishes the edit
    driver.sensor.SetValue("Destination Port", "2369");
    ask();
    driver.Wait();
    QCOMPARE(driver.Destination(), "192.168.1.100:77");
    driver.Key(Qt::Key_Escape);
    QCOMPARE(driver.Destination(), "192.168.1.100:2369");
    driver.sensor.AddFault("*=silence");
    ask();
    driver.Type("zeltoDestinationPortField", "7");
    driver.manager->Stop();
    driver.Wait();
    QCOMPARE(driver.Destination(), ":");  // also when the call fails now
  }

  void PackageGoesToItsUpgrade() {
    const QString transmitted = "Upgrade package transmitted successfully.";
    const struct {
      const char* model;
      int mode;
      QString notice;
    } cases[] = {{"Zelto-KTC", 1, transmitted},
                 {"Marvo-KTC", 0, "Marvo upgrade completed. The lidar will automatically reboot."}};
    const auto package = varkel::test::FullMarvoPackage();
    const QByteArray content(reinterpret_cast<const char*>(package.data()), static_cast<int>(package.size()));
    for (const auto& [model, mode, notice] : cases) {
      SmallSensorPageDriver driver(model);
      // The controller keeps the last mode it was given, so it must be one that the page shows.
      driver.Choose("zeltoUpgradeMode", 1);
      for (const char* name : {"Quenta", model}) {
        QMetaObject::invokeMethod(driver.root, "changeModel", Q_ARG(QVariant, QString(name)));
      }
      QCOMPARE(driver.Property("zeltoUpgradeMode", "currentIndex").toInt(), 0);
      if (mode == 1) driver.Choose("zeltoUpgradeMode", 1);
      QVERIFY(driver.Connect());
      QTest::ignoreMessage(QtDebugMsg, "Rejected, need a *.bin or *.patch file");
      driver.Drop("firmware.bin.zip");
      QCOMPARE(driver.Text("upgradeFileName"), "Rejected, need a *.bin or *.patch file");
      QVERIFY(!driver.Has("upgradeProgress") && !driver.Has("upgradeNote"));
      driver.sensor.AddFault("ota:2=late:100");
      EVENTUALLY_VERIFY(driver.Find("attachButton")->isEnabled());  // the window knows of the connection
      driver.Drop("firmware.bin", content);
      QVERIFY(driver.NoticeShows("messageWindow",
                                 "Mode: " + driver.Property("zeltoUpgradeMode", "currentText").toString()));
      driver.Click("noticeAcceptButton");
      EVENTUALLY_VERIFY(driver.Has("upgradeProgress") && driver.Has("upgradeNote"));
      QVERIFY(!driver.Find("attachButton")->isEnabled() && !driver.Find("zeltoUpgradeMode")->isEnabled());
      QVERIFY(driver.NoticeShows("successWindow", notice));
      EVENTUALLY_VERIFY(!driver.Has("upgradeProgress"));
      const auto received = driver.device.firmware.Received();
      QVERIFY(!received.empty() && received[0].is_component == (mode == 0));
      QVERIFY(mode == 0 || static_cast<int>(received[0].purpose) == mode);
    }
  }
};
const RegisterTest<SmallSensorPageTest> register_small_sensor_page_test;

}  // namespace

#include "small_sensor_page_test.moc"
