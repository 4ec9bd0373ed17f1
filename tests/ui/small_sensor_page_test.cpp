#include <QFileInfo>
#include <QQmlContext>
#include <QQmlEngine>
#include <QRegularExpression>
#include <algorithm>

#include "tests/ui/ui_test.h"

namespace {

using Call = QPair<QString, QVariantList>;

/// A controller that notes what the page asks of it and answers when the test says so.
class StandIn : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool IsConnected MEMBER connected NOTIFY isConnectedChanged)
  Q_PROPERTY(int connectType MEMBER type NOTIFY connectTypeChanged)
  Q_PROPERTY(bool IsUpgrading MEMBER upgrading NOTIFY isUpgradingChanged)
  Q_PROPERTY(bool isWorking READ IsWorking NOTIFY isWorkingChanged)
  Q_PROPERTY(int upgradeProgress MEMBER progress)
  Q_PROPERTY(int upgradeProgressTotalLen MEMBER total)
  Q_PROPERTY(QVariantList ZeltoLidarInfo MEMBER info NOTIFY zeltoLidarInfoChanged)
  Q_PROPERTY(QVariantList ZeltoLidarVersionInfo MEMBER versions NOTIFY zeltoLidarInfoChanged)

 public:
  Q_INVOKABLE void CallInBackground(const QString& operation, const QVariantList& arguments) {
    calls.append({operation, arguments});
    ++waiting;
    emit isWorkingChanged();
  }
  Q_INVOKABLE void ZeltoSetUpgradeMode(int mode) { calls.append({"ZeltoSetUpgradeMode", {mode}}); }
  Q_INVOKABLE void ZeltoUpgradeLidar(const QUrl& file) { calls.append({"ZeltoUpgradeLidar", {file}}); }
  Q_INVOKABLE void MarvoUpgradeLidar(const QUrl& file) { calls.append({"MarvoUpgradeLidar", {file}}); }

  bool IsWorking() const { return waiting > 0; }
  void Answer(const QString& operation, const QVariant& result = {}) {
    --waiting;
    emit isWorkingChanged();
    emit callFinished(operation, result);
  }
  void Connect(bool on) {
    connected = on;
    emit isConnectedChanged();
  }
  QVector<Call> TakeCalls() { return std::exchange(calls, {}); }

  bool connected = false;
  int type = 2;
  bool upgrading = false;
  int waiting = 0;
  int progress = 0;
  int total = 0;
  QVariantList info;
  QVariantList versions;
  QVector<Call> calls;

 signals:
  void isConnectedChanged();
  void connectTypeChanged();
  void isUpgradingChanged();
  void isWorkingChanged();
  void zeltoLidarInfoChanged();
  void callFinished(QString operation, QVariant result);
};

QVariantMap Row(const QString& label, const QString& value) {
  return {{"label", label}, {"value", value}};
}

/// The page alone, with a user.
class Bench : public User {
 public:
  explicit Bench(const QString& model) {
    PrepareQml();
    page.rootContext()->setContextProperty("varkel_manager", &controller);
    page.setResizeMode(QQuickView::SizeRootObjectToView);
    page.setInitialProperties({{"selectedModel", model}});
    page.setSource(QUrl("qrc:/Qml/assembly/Zelto.qml"));
    page.resize(1300, 1600);
    page.show();
    Use(page);
    controller.TakeCalls();
  }
  void SelectModel(const QString& model) { page.rootObject()->setProperty("selectedModel", model); }
  void SaveCalibration(const QUrl& folder) {
    QMetaObject::invokeMethod(Find("zeltoCalibrationRow"), "save", Q_ARG(QVariant, folder));
  }
  /// What the press asks of the controller.
  QVector<Call> CallsOf(const QString& button) {
    controller.TakeCalls();
    Press(button);
    return controller.TakeCalls();
  }

  StandIn controller;
  QQuickView page;
};

class SmallSensorPageTest : public QObject {
  Q_OBJECT
 private slots:
  void RowsOfTheModels_data() {
    const Table<bool, bool, QStringList> row("imu", "destination", "modes");
    row("Zelto", false, false, {"APP+FPGA", "PBL"});
    row("Zelto-KTC", false, true, {"APP+FPGA", "PBL"});
    row("Marvo-KTC", true, true, {"Lidar", "Junction Box"});
  }
  void RowsOfTheModels() {
    QFETCH(bool, imu);
    Bench bench(imu ? "Zelto" : "Marvo-KTC");
    QCOMPARE(bench.Has("zeltoImuRangeSave"), !imu);
    bench.SelectModel(QTest::currentDataTag());
    QCOMPARE(bench.Has("zeltoImuRangeSave"), imu);
    QTEST(bench.Has("zeltoDestinationSave"), "destination");
    QTEST(bench.Property("zeltoUpgradeMode", "model").toStringList(), "modes");
  }

  void ListsFollowTheSensor() {
    Bench bench("Marvo-KTC");
    bench.controller.info = {Row("Serial Number", "<b>M1</b>"), Row("UDP Port", "xx")};
    bench.controller.versions = {Row("BMB FPGA Version", "1.2")};
    emit bench.controller.zeltoLidarInfoChanged();
    QCOMPARE(bench.Text("zeltoInfo_0"), "<b>M1</b>");
    QCOMPARE(bench.Text("zeltoVersion_0"), "1.2");
    QQuickItem* const port = bench.Find("zeltoInfo_1");
    QCOMPARE(port->parentItem()->parentItem()->property("text"), "UDP Port");
    bench.controller.info[1] = Row("UDP Port", "2368");
    emit bench.controller.zeltoLidarInfoChanged();
    QCOMPARE(bench.Find("zeltoInfo_1"), port);  // the same field, so that a selection lasts
    QCOMPARE(bench.Text("zeltoInfo_1"), "2368");
  }

  void ButtonsCallTheSensor() {
    const struct {
      const char* button;
      Call call;
      QMap<QString, QPair<int, const char*>> choices = {};  ///< by combo: index and text
    } cases[] = {
        {"zeltoStandbySave", {"ZeltoSetStandby", {1}}, {{"zeltoStandbyCombo", {1, "Standby"}}}},
        {"zeltoStandbySave", {"ZeltoSetStandby", {0}}, {{"zeltoStandbyCombo", {0, "In Operation"}}}},
        {"zeltoSpinRateSave", {"ZeltoSetSpinRate", {1}}, {{"zeltoSpinRateCombo", {1, "10hz"}}}},
        {"zeltoReturnModeSave", {"ZeltoSetReturnMode", {1}}, {{"zeltoReturnModeCombo", {1, "Last"}}}},
        {"zeltoImuRangeSave",
         {"MarvoSetIMURange", {5, 3}},
         {{"zeltoAngularRangeCombo", {5, "±4000 dps"}}, {"zeltoAccelerationRangeCombo", {3, "±2g"}}}},
        {"zeltoImuRangeSave",
         {"MarvoSetIMURange", {4, 0}},
         {{"zeltoAngularRangeCombo", {4, "±125 dps"}}, {"zeltoAccelerationRangeCombo", {0, "±16g"}}}},
        {"zeltoSafetyGet", {"ZeltoGetLidarFunctionSafety", {}}},
        {"zeltoBaudRateGet", {"ZeltoGetBaudRate", {}}}};
    Bench bench("Marvo-KTC");
    const QStringList all{"zeltoBaudRateGet",  "zeltoBaudRateSave",        "zeltoStandbySave",
                          "zeltoSpinRateSave", "zeltoReturnModeSave",      "zeltoImuRangeSave",
                          "zeltoSafetyGet",    "zeltoCalibrationDownload", "zeltoDestinationSave"};
    const auto enabled = [&](const QString& button) { return bench.Find(button)->isEnabled(); };
    for (const auto& [button, call, choices] : cases) {
      for (const QString& combo : choices.keys()) {
        bench.Choose(combo, choices[combo].first);
        QCOMPARE(bench.Property(combo, "displayText").toString(), choices[combo].second);
      }
      QCOMPARE(bench.CallsOf(button), QVector<Call>{call});
      QVERIFY(std::none_of(all.begin(), all.end(), enabled));  // until the sensor has answered
      bench.controller.Answer(call.first);
      QVERIFY(std::all_of(all.begin(), all.end(), enabled));
    }
  }

  void BaudRateIsReadAndWritten() {
    Bench bench("Zelto-KTC");
    QVERIFY(bench.CallsOf("zeltoBaudRateSave").isEmpty());  // the field is empty
    bench.Press("zeltoBaudRateGet");
    bench.controller.Answer("ZeltoGetBaudRate", "3125000");
    QCOMPARE(bench.Text("zeltoBaudRateField"), "3125000");
    bench.Type("zeltoBaudRateField", "9600");
    bench.Press("zeltoBaudRateGet");
    bench.controller.Answer("ZeltoGetBaudRate", "");  // failed
    QCOMPARE(bench.Text("zeltoBaudRateField"), "9600");
    QCOMPARE(bench.CallsOf("zeltoBaudRateSave"), (QVector<Call>{{"ZeltoSetBaudRateFromUI", {"9600"}}}));
  }

  void FaultsAreListed() {
    Bench bench("Zelto");
    const auto shown = [&](const QVariantList& answer) {
      bench.Press("zeltoSafetyGet");
      bench.controller.Answer("ZeltoGetLidarFunctionSafety", answer);
      return bench.Text("zeltoFaultState") + ' ' +
             bench.Property("zeltoFaultCodeCombo", "displayText").toString() + ' ' +
             bench.Property("zeltoFaultCodeCombo", "model").toStringList().join(',');
    };
    QCOMPARE(bench.Text("zeltoFaultState"), "Normal");
    QCOMPARE(shown({"Shutdown", "0x12", "0x1f"}), "Shutdown 0x12 0x12,0x1f");
    QCOMPARE(shown({}), "Shutdown 0x12 0x12,0x1f");  // failed
    QCOMPARE(shown({"Warning"}), "Warning None None");
  }

  void CalibrationGoesIntoTheChosenFolder() {
    const struct {
      QUrl folder;
      const char* path;
      int result = 0;
    } cases[] = {{QUrl("file:///home/me"), "/home/me"},
                 {QUrl::fromLocalFile("/tmp/100% ä #1"), "/tmp/100% ä #1"},
                 {QUrl("file:///"), ""},
                 {QUrl("file:///C:/data/"), "C:/data"},
                 {QUrl("file://server/share"), "//server/share"},
                 {QUrl("file:///home/me"), "/home/me", -2}};
    Bench bench("Zelto");
    for (const auto& [folder, path, result] : cases) {
      bench.SaveCalibration(folder);
      const Call call = bench.controller.TakeCalls().value(0);
      QCOMPARE(call.first, "ZeltoGetCorrection");
      const QFileInfo file(call.second.value(0).toString());
      QCOMPARE(file.filePath(), QString(path) + "/" + file.fileName());
      QVERIFY(QRegularExpression("^correction_20\\d{6}-\\d{6}\\.bin$").match(file.fileName()).hasMatch());
      bench.controller.Answer("ZeltoGetCorrection", result);
      QCOMPARE(bench.Text("zeltoCalibrationOutcome"), result == 0 ? "Saved as " + file.fileName() : "");
    }
  }

  void DestinationIsReadAnew() {
    const Call query{"ZeltoGetDestinationConfig", {true}};
    Bench bench("Zelto-KTC");
    StandIn& controller = bench.controller;
    const auto shown = [&] {
      return bench.Text("zeltoDestinationIpField") + ':' + bench.Text("zeltoDestinationPortField");
    };
    controller.Connect(true);
    QCOMPARE(controller.TakeCalls(), QVector<Call>{query});
    controller.Answer(query.first, QVariantList{"10.0.0.7", "2368"});
    QCOMPARE(shown(), "10.0.0.7:2368");
    emit controller.connectTypeChanged();
    QCOMPARE(controller.TakeCalls(), QVector<Call>{query});
    controller.Answer(query.first, QVariantList{"10.0.0.7"});  // an entry is missing
    QCOMPARE(shown(), "xx.xx.xx.xx:xx");
    bench.SelectModel("Marvo-KTC");
    QVERIFY(controller.TakeCalls().contains(query));
    bench.Type("zeltoDestinationPortField", "77");  // stays until the user is done
    controller.Answer(query.first, QVariantList{"10.0.0.8", "2369"});
    QCOMPARE(shown(), "10.0.0.8:77");
    bench.Key(Qt::Key_Escape);
    QCOMPARE(shown(), "10.0.0.8:2369");
    bench.SelectModel("Zelto");
    QVERIFY(!controller.TakeCalls().contains(query));
    bench.SelectModel("Zelto-KTC");
    QCOMPARE(shown(), ":");
    controller.Answer(query.first, QVariantList{"10.0.0.8", "2369"});
    bench.Type("zeltoDestinationPortField", "7");
    controller.TakeCalls();
    controller.Connect(false);
    QVERIFY(controller.TakeCalls().isEmpty());
    QCOMPARE(shown(), ":");
  }

  void OnlyTheLastDestinationAnswerCounts() {
    Bench bench("Zelto-KTC");
    const auto shown_after = [&bench](const QVariantList& answer) {
      bench.controller.Answer("ZeltoGetDestinationConfig", answer);
      return bench.Text("zeltoDestinationIpField");
    };
    for (const bool on : {true, false}) bench.controller.Connect(on);
    QCOMPARE(shown_after({"10.0.0.7", "1"}), "");  // not connected any more
    for (const bool on : {true, false, true}) bench.controller.Connect(on);
    QCOMPARE(shown_after({}), "");  // the newer question is still open
    QCOMPARE(shown_after({"10.0.0.8", "2"}), "10.0.0.8");
  }

  void DestinationIsWritten() {
    // The controller refuses 70000; what is no port at all goes to it as -1.
    const std::pair<const char*, int> cases[] = {{"2368", 2368}, {"70000", 70000}, {"99999999999", -1},
                                                 {"xx", -1},     {"23a", -1},      {"", -1}};
    for (const auto& [port, sent] : cases) {
      Bench bench("Zelto-KTC");
      bench.Type("zeltoDestinationIpField", "10.1.2.3");
      bench.Type("zeltoDestinationPortField", port);
      QCOMPARE(bench.CallsOf("zeltoDestinationSave"),
               (QVector<Call>{{"ZeltoSetDestinationIPandPort", {"10.1.2.3", sent}}}));
    }
  }

  void PackageGoesToItsUpgrade_data() {
    const Table<QString, int, int, QString> row("model", "mode", "told", "entry");
    row("Zelto, first mode", "Zelto", 0, 0, "ZeltoUpgradeLidar");
    row("Zelto-KTC, PBL", "Zelto-KTC", 1, 1, "ZeltoUpgradeLidar");
    row("Marvo-KTC, Lidar", "Marvo-KTC", 0, 0, "MarvoUpgradeLidar");
    row("Marvo-KTC, Junction Box", "Marvo-KTC", 1, 2, "ZeltoUpgradeLidar");
  }
  void PackageGoesToItsUpgrade() {
    QFETCH(QString, model);
    QFETCH(int, mode);
    QFETCH(int, told);
    QFETCH(QString, entry);
    Bench bench(model);
    bench.Choose("zeltoUpgradeMode", 1 - mode);
    bench.controller.TakeCalls();
    bench.Choose("zeltoUpgradeMode", mode);
    QCOMPARE(bench.controller.TakeCalls(), (QVector<Call>{{"ZeltoSetUpgradeMode", {told}}}));
    QTest::ignoreMessage(QtDebugMsg, "Rejected, need a *.bin or *.patch file");
    bench.Drop(QUrl("file:///tmp/firmware.bin.zip"));
    QCOMPARE(bench.Text("upgradeFileName"), "Rejected, need a *.bin or *.patch file");
    const QUrl files[] = {QUrl("file:///tmp/new one.bin"), QUrl("file:///tmp/b.patch")};
    for (const QUrl& file : files) bench.Drop(file);
    QCOMPARE(bench.controller.calls, (QVector<Call>{{entry, {files[0]}}, {entry, {files[1]}}}));
    QCOMPARE(bench.Text("upgradeFileName"), "b.patch");
  }

  // The controller keeps the mode that it was told last, so a choice that is no longer shown must not last
  // there.
  void ModeBeginsAnewWithThePage() {
    Bench bench("Zelto");
    bench.Choose("zeltoUpgradeMode", 1);
    bench.controller.TakeCalls();
    bench.SelectModel("Zelto-KTC");  // the same choice of modes
    QVERIFY(bench.controller.calls.isEmpty());
    QCOMPARE(bench.Property("zeltoUpgradeMode", "displayText"), "PBL");
    bench.SelectModel("Marvo-KTC");
    QCOMPARE(bench.controller.calls.last(), (Call{"ZeltoSetUpgradeMode", {0}}));
    QCOMPARE(bench.Property("zeltoUpgradeMode", "displayText"), "Lidar");
  }

  void ProgressShowsOnlyWhileUpgrading() {
    Bench bench("Zelto");
    StandIn& controller = bench.controller;
    QVERIFY(!bench.Has("upgradeProgress") && !bench.Has("upgradeNote"));
    controller.upgrading = true;
    controller.total = 400;
    emit controller.isUpgradingChanged();
    QVERIFY(bench.Has("upgradeProgress") && bench.Has("upgradeNote"));
    QVERIFY(!bench.Find("attachButton")->isEnabled() && !bench.Find("zeltoUpgradeMode")->isEnabled());
    QCOMPARE(bench.Text("upgradeProgress"), "0.00%");
    controller.progress = 133;
    QTRY_COMPARE(bench.Text("upgradeProgress"), "33.25%");
    controller.progress = 401;  // the last block was a short one
    QTRY_COMPARE(bench.Text("upgradeProgress"), "100.00%");
    QCOMPARE(bench.Property("upgradeProgress", "fillColor").value<QColor>(), QColor("green"));
    controller.upgrading = false;
    emit controller.isUpgradingChanged();
    QVERIFY(!bench.Has("upgradeProgress") && !bench.Has("upgradeNote"));
  }

  void TabFollowsTheEye() {
    Bench bench("Marvo-KTC");
    bench.controller.info = {Row("Serial Number", "M1")};
    emit bench.controller.zeltoLidarInfoChanged();
    bench.page.resize(1300, 400);
    auto* const content = bench.page.rootObject()->property("contentItem").value<QQuickItem*>();
    bench.Find("zeltoInfo_0")->forceActiveFocus(Qt::TabFocusReason);
    QPointF last;
    int visited = 0;
    for (; bench.page.activeFocusItem()->objectName() != "sendButton"; ++visited) {
      bench.Key(Qt::Key_Tab);
      const QQuickItem* const item = bench.page.activeFocusItem();
      const QPointF at = item->mapToItem(content, {});
      const bool onward = at.y() > last.y() + 5 || (at.y() > last.y() - 5 && at.x() > last.x());
      const qreal top = item->mapToScene({}).y();
      const bool in_view = top >= 0 && top + item->height() <= bench.page.height();
      QVERIFY2(onward && in_view, qPrintable(item->objectName()));
      last = at;
    }
    QVERIFY(visited > 20);
  }
};
const RegisterTest<SmallSensorPageTest> registration;

}  // namespace

#include "small_sensor_page_test.moc"
