#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>

#include "tests/core/marvo_sample.h"
#include "tests/ui/desk.h"

namespace {

using varkel::sim::SmallSensorDevice;
using varkel::sim::SmallSensorItems;

/// The window with the page of a small sensor, and that sensor.
class SmallDesk : public Desk {
 public:
  explicit SmallDesk(const QString& model)
      : Desk(model), device(model == "Zelto" ? lines.device() : sensor.device()) {}

  QString Destination() const {
    return Text("zeltoDestinationIpField") + ':' + Text("zeltoDestinationPortField");
  }
  /// What the sensor has been set to.
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
    if (!QTest::qWaitFor([this] { return !manager->isWorking(); }, kPatienceMs))
      qFatal("a call takes too long");
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
      SmallDesk desk(model);
      QCOMPARE(desk.Has("zeltoImuRangeSave"), imu);
      QCOMPARE(desk.Has("zeltoDestinationSave"), destination);
      QCOMPARE(desk.Property("zeltoUpgradeMode", "model").toStringList(), modes);
      const QQuickItem* const field = desk.Find("zeltoInfo_0");
      EVENTUALLY_COMPARE(desk.Text("zeltoInfo_0"), "xxxxxxxx");
      QVERIFY(desk.Connect());
      EVENTUALLY_VERIFY(desk.Text("zeltoInfo_0") != "xxxxxxxx");
      EVENTUALLY_COMPARE(desk.Text("zeltoVersion_0"), version);
      if (destination) EVENTUALLY_COMPARE(desk.Destination(), "192.168.1.100:2368");
      desk.Press("connectButton");
      EVENTUALLY_VERIFY(!desk.manager->IsConnected());
      EVENTUALLY_COMPARE(desk.Text("zeltoInfo_0"), "xxxxxxxx");
      if (destination) QCOMPARE(desk.Destination(), ":");
      QCOMPARE(desk.Find("zeltoInfo_0"), field);  // the same one, so that a selection lasts
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
    SmallDesk desk("Marvo-KTC");
    QVERIFY(desk.Connect());
    EVENTUALLY_VERIFY(desk.Destination() != ":");
    for (const auto& [button, inputs, held, notice] : cases) {
      for (const QString& control : inputs.keys()) desk.Set(control, inputs[control]);
      desk.Press(button);
      QVERIFY2(notice == nullptr || desk.Dismiss("successWindow", notice), button);
      for (const QString& item : held.keys()) EVENTUALLY_COMPARE(desk.Held().value(item, -1), held[item]);
    }
    for (const char* port : {"70000", "99999999999", "xx", "23a", ""}) {
      desk.Set("zeltoDestinationPortField", port);
      desk.Press("zeltoDestinationSave");
      QVERIFY2(desk.Dismiss("errorWindow", "set destination IP and port error"), port);
    }
    QCOMPARE(desk.Held().value("10.1.2.3"), 5000);
    desk.Set("zeltoBaudRateField", "");
    desk.Press("zeltoBaudRateSave");
    QVERIFY(!desk.manager->isWorking());
  }

  void AnswersAreShownAndFailuresChangeNothing() {
    SmallDesk desk("Marvo-KTC");
    const auto shown_after = [&](const char* misbehaviour, std::uint8_t state,
                                 std::vector<std::uint16_t> codes) {
      desk.device.state.Change([&](SmallSensorItems& items) {
        items.baud_rate = 115200 + state;
        items.safety_state = state;
        items.fault_codes = std::move(codes);
      });
      desk.sensor.AddFault(misbehaviour);
      for (const char* button : {"zeltoBaudRateGet", "zeltoSafetyGet"}) desk.Press(button);
      desk.Wait();
      return desk.Text("zeltoBaudRateField") + ' ' + desk.Text("zeltoFaultState") + ' ' +
             desk.Property("zeltoFaultCodeCombo", "model").toStringList().join(',');
    };
    QVERIFY(desk.Connect());
    QCOMPARE(desk.Text("zeltoFaultState"), "Normal");
    QCOMPARE(shown_after("*=none", 2, {0x12, 0x101}), "115202 Shutdown 0x0012,0x0101");
    QCOMPARE(shown_after("*=none", 1, {}), "115201 Warning None");
    QCOMPARE(shown_after("*=error", 2, {0x12}), "115201 Warning None");

    const auto save_calibration = [&] {
      QMetaObject::invokeMethod(desk.Find("zeltoCalibrationRow"), "save",
                                Q_ARG(QVariant, QUrl::fromLocalFile(desk.folder.filePath("100% ä #1"))));
      desk.Wait();
      return desk.Text("zeltoCalibrationOutcome");
    };
    QVERIFY(QDir(desk.folder.path()).mkdir("100% ä #1"));
    QVERIFY(save_calibration().startsWith("get calibration error, ret:"));
    desk.sensor.ClearFaults();
    const QString outcome = save_calibration();
    QVERIFY(QRegularExpression("^Saved as correction_20\\d{6}-\\d{6}\\.bin, [0-9:]{8}$")
                .match(outcome)
                .hasMatch());
    QFile saved(desk.folder.filePath("100% ä #1/" + outcome.mid(9).section(',', 0, 0)));
    QVERIFY(saved.open(QIODevice::ReadOnly));
    const QByteArray content = saved.readAll();
    QCOMPARE(std::vector<std::uint8_t>(content.begin(), content.end()), desk.device.state.Items().correction);
    const std::pair<const char*, const char*> places[] = {{"file:///C:/data", "C:/data"},
                                                          {"file://server/share", "//server/share"}};
    for (const auto& [url, path] : places) {
      QVariant local;
      QMetaObject::invokeMethod(desk.Find("zeltoCalibrationRow"), "localPath", Q_RETURN_ARG(QVariant, local),
                                Q_ARG(QVariant, QUrl(url)));
      QCOMPARE(local, path);
    }
  }

  void OutcomesStandBesideTheirRows() {
    SmallDesk desk("Zelto-KTC");
    const auto outcome = [&](const char* name) {
      return desk.Text(QString(name) + "Outcome").section(' ', 0, 3);
    };
    QVERIFY(desk.Connect());
    QCOMPARE(desk.Property("zeltoStandbyCombo", "displayText").toString(), "not read");
    QCOMPARE(outcome("zeltoSafety"), "not read");
    desk.Press("zeltoStandbySave");  // nothing is chosen
    QCOMPARE(outcome("zeltoStandby"), "Choose a value first");
    desk.Choose("zeltoStandbyCombo", 1);
    QVERIFY(desk.Property("zeltoStandbyCombo", "marked").toBool());
    desk.Press("zeltoStandbySave");
    EVENTUALLY_VERIFY(outcome("zeltoStandby").startsWith("Saved "));
    QVERIFY(!desk.Property("zeltoStandbyCombo", "marked").toBool());
    desk.Press("zeltoSafetyGet");
    EVENTUALLY_VERIFY(outcome("zeltoSafety").startsWith("Read "));
    desk.sensor.AddFault("*=error");
    desk.Choose("zeltoStandbyCombo", 0);
    desk.Press("zeltoStandbySave");
    EVENTUALLY_COMPARE(outcome("zeltoStandby"), "set lidar mode error,");
    QVERIFY(desk.Dismiss("errorWindow", "set lidar mode error"));
    QVERIFY(desk.Property("zeltoStandbyCombo", "marked").toBool());  // the sensor did not take it
    desk.sensor.ClearFaults();
    desk.manager->Stop();
    QCOMPARE(desk.Property("zeltoStandbyCombo", "displayText").toString(), "not read");
    QCOMPARE(outcome("zeltoStandby") + outcome("zeltoSafety"), "not read");
  }

  void FunctionsRestWithoutKtcAndSectionsAreListed() {
    const SmallDesk desk("Zelto");
    QVERIFY(desk.Has("zeltoFunctionsRest") && !desk.Find("zeltoBaudRateGet")->isEnabled());
    desk.Key(Qt::Key_5, Qt::ControlModifier);  // "Send Command", the last one
    EVENTUALLY_VERIFY(desk.Property("section_4", "current").toBool());
    const auto* const view = desk.Find("zeltoView");
    QVERIFY(view->property("atYEnd").toBool());
    desk.Click("section_0");
    QCOMPARE(view->property("contentY").toInt(), 0);
  }

  void DestinationIsReadAnew() {
    SmallDesk desk("Zelto-KTC");
    const auto ask = [&] { emit desk.manager->connectTypeChanged(); };
    QVERIFY(desk.Connect());
    EVENTUALLY_COMPARE(desk.Destination(), "192.168.1.100:2368");
    desk.Type("zeltoDestinationPortField", "77");  // stays until the user is done
    desk.sensor.SetValue("Destination Port", "2369");
    ask();
    desk.Wait();
    QCOMPARE(desk.Destination(), "192.168.1.100:77");
    desk.Key(Qt::Key_Escape);
    QCOMPARE(desk.Destination(), "192.168.1.100:2369");
    desk.sensor.AddFault("*=silence");
    ask();
    desk.Type("zeltoDestinationPortField", "7");
    desk.manager->Stop();
    desk.Wait();
    QCOMPARE(desk.Destination(), ":");  // also when the call fails now
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
      SmallDesk desk(model);
      // The controller keeps the mode that it got last, so one that no page shows must not last there.
      desk.Choose("zeltoUpgradeMode", 1);
      for (const char* name : {"Quenta", model}) {
        QMetaObject::invokeMethod(desk.root, "changeModel", Q_ARG(QVariant, QString(name)));
      }
      QCOMPARE(desk.Property("zeltoUpgradeMode", "currentIndex").toInt(), 0);
      if (mode == 1) desk.Choose("zeltoUpgradeMode", 1);
      QVERIFY(desk.Connect());
      QTest::ignoreMessage(QtDebugMsg, "Rejected, need a *.bin or *.patch file");
      desk.Drop("firmware.bin.zip");
      QCOMPARE(desk.Text("upgradeFileName"), "Rejected, need a *.bin or *.patch file");
      QVERIFY(!desk.Has("upgradeProgress") && !desk.Has("upgradeNote"));
      desk.sensor.AddFault("ota:2=late:100");
      EVENTUALLY_VERIFY(desk.Find("attachButton")->isEnabled());  // the window has heard of the connection
      desk.Drop("firmware.bin", content);
      QVERIFY(desk.NoticeShows("messageWindow",
                               "Mode: " + desk.Property("zeltoUpgradeMode", "currentText").toString()));
      desk.Click("noticeAcceptButton");
      EVENTUALLY_VERIFY(desk.Has("upgradeProgress") && desk.Has("upgradeNote"));
      QVERIFY(!desk.Find("attachButton")->isEnabled() && !desk.Find("zeltoUpgradeMode")->isEnabled());
      QVERIFY(desk.NoticeShows("successWindow", notice));
      EVENTUALLY_VERIFY(!desk.Has("upgradeProgress"));
      const auto received = desk.device.firmware.Received();
      QVERIFY(!received.empty() && received[0].is_component == (mode == 0));
      QVERIFY(mode == 0 || static_cast<int>(received[0].purpose) == mode);
    }
  }
};
const RegisterTest<SmallSensorPageTest> register_small_sensor_page_test;

}  // namespace

#include "small_sensor_page_test.moc"
