#include <QFileInfo>
#include <QQmlContext>
#include <QQmlEngine>
#include <QRegularExpression>
#include <QSignalSpy>

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
class Bench {
 public:
  explicit Bench(const QString& model) {
    PrepareQml();
    view.rootContext()->setContextProperty("varkel_manager", &controller);
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.setInitialProperties({{"selectedModel", model}});
    view.setSource(QUrl("qrc:/Qml/assembly/Zelto.qml"));
    view.resize(1300, 1600);
    view.show();
    view.requestActivate();
    if (!QTest::qWaitForWindowActive(&view)) qFatal("the page does not open");
  }

  QQuickItem* Find(const QString& name) const {
    QQuickItem* const item = Look(view.rootObject(), name);
    if (item == nullptr) qFatal("no control is named %s", qPrintable(name));
    return item;
  }
  bool Shows(const QString& name) const { return Find(name)->isVisible(); }
  QString Text(const QString& name) const { return Find(name)->property("text").toString(); }

  void Click(const QString& name) {
    QQuickItem* const item = Find(name);
    item->forceActiveFocus(Qt::TabFocusReason);  // scrolls it into view
    const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, middle.toPoint());
  }
  void Type(const QString& name, const QString& text) {
    Find(name)->forceActiveFocus(Qt::TabFocusReason);
    for (const QChar character : text) QTest::keyClick(&view, character.toLatin1());
  }
  /// Chooses by key, as a user does who steps down from the first entry.
  void Choose(const QString& name, int index) {
    QQuickItem* const combo = Find(name);
    combo->forceActiveFocus(Qt::TabFocusReason);
    while (combo->property("currentIndex").toInt() != index) {
      QTest::keyClick(&view, combo->property("currentIndex").toInt() < index ? Qt::Key_Down : Qt::Key_Up);
    }
  }
  void Drop(const QString& file) {
    QMetaObject::invokeMethod(Find("upgradeDrop"), "dropped", Q_ARG(QUrl, QUrl(file)));
  }

  StandIn controller;
  QQuickView view;

 private:
  static QQuickItem* Look(QQuickItem* item, const QString& name) {
    if (item->objectName() == name) return item;
    for (QQuickItem* child : item->childItems()) {
      if (QQuickItem* found = Look(child, name)) return found;
    }
    return nullptr;
  }
};

class SmallSensorPageTest : public QObject {
  Q_OBJECT
 private slots:
  void RowsOfTheModels_data();
  void RowsOfTheModels();
  void ListsFollowTheSensor();
  void ButtonsCallTheSensor_data();
  void ButtonsCallTheSensor();
  void ButtonsRestWhileTheSensorIsBusy();
  void BaudRateIsReadAndWritten();
  void FaultsAreListed();
  void CalibrationGoesIntoTheChosenFolder_data();
  void CalibrationGoesIntoTheChosenFolder();
  void DestinationIsReadAnew();
  void OnlyTheLastDestinationAnswerCounts();
  void TypedDestinationStays();
  void DestinationIsWritten_data();
  void DestinationIsWritten();
  void PackageGoesToItsUpgrade_data();
  void PackageGoesToItsUpgrade();
  void ModeBeginsAnewWithThePage();
  void OtherFilesAreNoPackages();
  void ProgressShowsOnlyWhileUpgrading();
  void TabFollowsTheEye();
};
const RegisterTest<SmallSensorPageTest> registration;

void SmallSensorPageTest::RowsOfTheModels_data() {
  QTest::addColumn<bool>("imu");
  QTest::addColumn<bool>("destination");
  QTest::addColumn<QStringList>("modes");
  const QStringList modes{"APP+FPGA", "PBL"};
  QTest::newRow("Zelto") << false << false << modes;
  QTest::newRow("Zelto-KTC") << false << true << modes;
  QTest::newRow("Marvo-KTC") << true << true << QStringList{"Lidar", "Junction Box"};
}

void SmallSensorPageTest::RowsOfTheModels() {
  QFETCH(bool, imu);
  QFETCH(bool, destination);
  Bench bench(QTest::currentDataTag());
  const auto check = [&] {
    QCOMPARE(bench.Shows("zeltoImuRangeSave"), imu);
    QCOMPARE(bench.Shows("zeltoDestinationSave"), destination);
    QTEST(bench.Find("zeltoUpgradeMode")->property("model").toStringList(), "modes");
  };
  check();
  bench.view.rootObject()->setProperty("selectedModel", imu ? "Zelto" : "Marvo-KTC");
  QCOMPARE(bench.Shows("zeltoImuRangeSave"), !imu);
  bench.view.rootObject()->setProperty("selectedModel", QTest::currentDataTag());
  check();
}

void SmallSensorPageTest::ListsFollowTheSensor() {
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

void SmallSensorPageTest::ButtonsCallTheSensor_data() {
  using Choices = QVector<QPair<QString, int>>;
  QTest::addColumn<Choices>("choices");
  QTest::addColumn<QStringList>("entries");
  QTest::addColumn<QString>("button");
  QTest::addColumn<Call>("call");
  QTest::newRow("standby") << Choices{{"zeltoStandbyCombo", 1}} << QStringList{"Standby"}
                           << "zeltoStandbySave" << Call{"ZeltoSetStandby", {1}};
  QTest::newRow("operation") << Choices{{"zeltoStandbyCombo", 0}} << QStringList{"In Operation"}
                             << "zeltoStandbySave" << Call{"ZeltoSetStandby", {0}};
  QTest::newRow("spin rate") << Choices{{"zeltoSpinRateCombo", 1}} << QStringList{"10hz"}
                             << "zeltoSpinRateSave" << Call{"ZeltoSetSpinRate", {1}};
  QTest::newRow("return mode") << Choices{{"zeltoReturnModeCombo", 1}} << QStringList{"Last"}
                               << "zeltoReturnModeSave" << Call{"ZeltoSetReturnMode", {1}};
  QTest::newRow("widest rotation") << Choices{{"zeltoAngularRangeCombo", 5},
                                              {"zeltoAccelerationRangeCombo", 3}}
                                   << QStringList{"±4000 dps", "±2g"} << "zeltoImuRangeSave"
                                   << Call{"MarvoSetIMURange", {5, 3}};
  QTest::newRow("narrow rotation") << Choices{{"zeltoAngularRangeCombo", 4},
                                              {"zeltoAccelerationRangeCombo", 0}}
                                   << QStringList{"±125 dps", "±16g"} << "zeltoImuRangeSave"
                                   << Call{"MarvoSetIMURange", {4, 0}};
  QTest::newRow("function safety") << Choices{} << QStringList{} << "zeltoSafetyGet"
                                   << Call{"ZeltoGetLidarFunctionSafety", {}};
  QTest::newRow("baud rate") << Choices{} << QStringList{} << "zeltoBaudRateGet"
                             << Call{"ZeltoGetBaudRate", {}};
}

void SmallSensorPageTest::ButtonsCallTheSensor() {
  using Choices = QVector<QPair<QString, int>>;
  QFETCH(Choices, choices);
  QFETCH(QStringList, entries);
  QFETCH(QString, button);
  QFETCH(Call, call);
  Bench bench("Marvo-KTC");
  for (int i = 0; i < choices.size(); ++i) {
    bench.Choose(choices[i].first, choices[i].second);
    QCOMPARE(bench.Find(choices[i].first)->property("displayText").toString(), entries[i]);
  }
  bench.controller.TakeCalls();
  bench.Click(button);
  QCOMPARE(bench.controller.calls, QVector<Call>{call});
}

void SmallSensorPageTest::ButtonsRestWhileTheSensorIsBusy() {
  Bench bench("Marvo-KTC");
  const QStringList buttons{"zeltoBaudRateGet",  "zeltoBaudRateSave",        "zeltoStandbySave",
                            "zeltoSpinRateSave", "zeltoReturnModeSave",      "zeltoImuRangeSave",
                            "zeltoSafetyGet",    "zeltoCalibrationDownload", "zeltoDestinationSave"};
  bench.Click("zeltoStandbySave");
  for (const QString& button : buttons) {
    QVERIFY2(!bench.Find(button)->isEnabled(), qPrintable(button));
  }
  bench.controller.Answer("ZeltoSetStandby");
  for (const QString& button : buttons) {
    QVERIFY2(bench.Find(button)->isEnabled(), qPrintable(button));
  }
}

void SmallSensorPageTest::BaudRateIsReadAndWritten() {
  Bench bench("Zelto-KTC");
  bench.controller.TakeCalls();
  bench.Click("zeltoBaudRateSave");
  QVERIFY(bench.controller.calls.isEmpty());  // the field is empty
  bench.Click("zeltoBaudRateGet");
  bench.controller.Answer("ZeltoGetBaudRate", "3125000");
  QCOMPARE(bench.Text("zeltoBaudRateField"), "3125000");
  bench.Type("zeltoBaudRateField", "9600");
  bench.Click("zeltoBaudRateGet");
  bench.controller.Answer("ZeltoGetBaudRate", "");  // failed
  QCOMPARE(bench.Text("zeltoBaudRateField"), "9600");
  bench.controller.TakeCalls();
  bench.Click("zeltoBaudRateSave");
  QCOMPARE(bench.controller.calls, (QVector<Call>{{"ZeltoSetBaudRateFromUI", {"9600"}}}));
}

void SmallSensorPageTest::FaultsAreListed() {
  Bench bench("Zelto");
  const auto codes = [&] { return bench.Find("zeltoFaultCodeCombo")->property("model").toStringList(); };
  const auto read = [&](const QVariantList& answer) {
    bench.Click("zeltoSafetyGet");
    bench.controller.Answer("ZeltoGetLidarFunctionSafety", answer);
  };
  QCOMPARE(bench.Text("zeltoFaultState"), "Normal");
  read({"Shutdown", "0x12", "0x1f"});
  QCOMPARE(bench.Text("zeltoFaultState"), "Shutdown");
  QCOMPARE(codes(), (QStringList{"0x12", "0x1f"}));
  QCOMPARE(bench.Find("zeltoFaultCodeCombo")->property("displayText"), "0x12");
  read({});  // failed
  QCOMPARE(bench.Text("zeltoFaultState"), "Shutdown");
  QCOMPARE(codes().size(), 2);
  read({"Warning"});
  QCOMPARE(bench.Text("zeltoFaultState"), "Warning");
  QCOMPARE(codes(), QStringList{"None"});
  QCOMPARE(bench.Find("zeltoFaultCodeCombo")->property("displayText"), "None");
}

void SmallSensorPageTest::CalibrationGoesIntoTheChosenFolder_data() {
  QTest::addColumn<QUrl>("folder");
  QTest::addColumn<QString>("path");
  QTest::addColumn<int>("result");
  QTest::newRow("plain") << QUrl("file:///home/me") << "/home/me" << 0;
  QTest::newRow("odd characters") << QUrl::fromLocalFile("/tmp/100% ä #1") << "/tmp/100% ä #1" << 0;
  QTest::newRow("root") << QUrl("file:///") << "" << 0;
  QTest::newRow("drive") << QUrl("file:///C:/data/") << "C:/data" << 0;
  QTest::newRow("network folder") << QUrl("file://server/share") << "//server/share" << 0;
  QTest::newRow("failed") << QUrl("file:///home/me") << "/home/me" << -2;
}

void SmallSensorPageTest::CalibrationGoesIntoTheChosenFolder() {
  QFETCH(QUrl, folder);
  QFETCH(QString, path);
  QFETCH(int, result);
  Bench bench("Zelto");
  bench.controller.TakeCalls();
  QMetaObject::invokeMethod(bench.Find("zeltoCalibrationRow"), "save", Q_ARG(QVariant, folder));
  QCOMPARE(bench.controller.calls.size(), 1);
  QCOMPARE(bench.controller.calls[0].first, "ZeltoGetCorrection");
  const QFileInfo file(bench.controller.calls[0].second.value(0).toString());
  QCOMPARE(file.filePath(), path + "/" + file.fileName());
  QVERIFY(QRegularExpression("^correction_20\\d{6}-\\d{6}\\.bin$").match(file.fileName()).hasMatch());
  bench.controller.Answer("ZeltoGetCorrection", result);
  QCOMPARE(bench.Text("zeltoCalibrationOutcome"), result == 0 ? "Saved as " + file.fileName() : "");
}

void SmallSensorPageTest::DestinationIsReadAnew() {
  const Call query{"ZeltoGetDestinationConfig", {true}};
  Bench bench("Zelto-KTC");
  StandIn& controller = bench.controller;
  const auto shown = [&] {
    return QStringList{bench.Text("zeltoDestinationIpField"), bench.Text("zeltoDestinationPortField")};
  };
  controller.TakeCalls();
  controller.Connect(true);
  QCOMPARE(controller.TakeCalls(), QVector<Call>{query});
  controller.Answer(query.first, QVariantList{"10.0.0.7", "2368"});
  QCOMPARE(shown(), (QStringList{"10.0.0.7", "2368"}));

  emit controller.connectTypeChanged();
  QCOMPARE(controller.TakeCalls(), QVector<Call>{query});
  controller.Answer(query.first, QVariantList{"10.0.0.7"});  // an entry is missing
  QCOMPARE(shown(), (QStringList{"xx.xx.xx.xx", "xx"}));

  bench.view.rootObject()->setProperty("selectedModel", "Marvo-KTC");
  QVERIFY(controller.TakeCalls().contains(query));
  controller.Answer(query.first, QVariantList{"10.0.0.8", "2369"});
  QCOMPARE(shown(), (QStringList{"10.0.0.8", "2369"}));

  bench.view.rootObject()->setProperty("selectedModel", "Zelto");
  QVERIFY(!controller.TakeCalls().contains(query));
  QCOMPARE(shown(), (QStringList{"", ""}));

  bench.view.rootObject()->setProperty("selectedModel", "Zelto-KTC");
  controller.Answer(query.first, QVariantList{"10.0.0.8", "2369"});
  bench.Type("zeltoDestinationPortField", "7");
  controller.TakeCalls();
  controller.Connect(false);
  QVERIFY(controller.TakeCalls().isEmpty());
  QCOMPARE(shown(), (QStringList{"", ""}));
}

void SmallSensorPageTest::OnlyTheLastDestinationAnswerCounts() {
  Bench bench("Zelto-KTC");
  StandIn& controller = bench.controller;
  controller.Connect(true);
  controller.Connect(false);
  controller.Answer("ZeltoGetDestinationConfig", QVariantList{"10.0.0.7", "1"});
  QCOMPARE(bench.Text("zeltoDestinationIpField"), "");  // not connected any more
  controller.Connect(true);
  controller.Connect(false);
  controller.Connect(true);
  controller.Answer("ZeltoGetDestinationConfig", QVariantList());
  QCOMPARE(bench.Text("zeltoDestinationIpField"), "");  // the newer question is still open
  controller.Answer("ZeltoGetDestinationConfig", QVariantList{"10.0.0.8", "2"});
  QCOMPARE(bench.Text("zeltoDestinationIpField"), "10.0.0.8");
}

void SmallSensorPageTest::TypedDestinationStays() {
  Bench bench("Zelto-KTC");
  bench.controller.Connect(true);
  bench.Type("zeltoDestinationPortField", "77");
  bench.controller.Answer("ZeltoGetDestinationConfig", QVariantList{"10.0.0.7", "2368"});
  QCOMPARE(bench.Text("zeltoDestinationPortField"), "77");
  QCOMPARE(bench.Text("zeltoDestinationIpField"), "10.0.0.7");
  QTest::keyClick(&bench.view, Qt::Key_Escape);
  QCOMPARE(bench.Text("zeltoDestinationPortField"), "2368");
}

void SmallSensorPageTest::DestinationIsWritten_data() {
  QTest::addColumn<QString>("port");
  QTest::addColumn<int>("sent");
  QTest::newRow("number") << "2368" << 2368;
  QTest::newRow("too large, the controller refuses it") << "70000" << 70000;
  QTest::newRow("wider than any integer") << "99999999999" << -1;
  QTest::newRow("no number") << "xx" << -1;
  QTest::newRow("trailing letter") << "23a" << -1;
  QTest::newRow("empty") << "" << -1;
}

void SmallSensorPageTest::DestinationIsWritten() {
  QFETCH(QString, port);
  QFETCH(int, sent);
  Bench bench("Zelto-KTC");
  bench.Type("zeltoDestinationIpField", "10.1.2.3");
  bench.Type("zeltoDestinationPortField", port);
  bench.controller.TakeCalls();
  bench.Click("zeltoDestinationSave");
  QCOMPARE(bench.controller.calls, (QVector<Call>{{"ZeltoSetDestinationIPandPort", {"10.1.2.3", sent}}}));
}

void SmallSensorPageTest::PackageGoesToItsUpgrade_data() {
  QTest::addColumn<QString>("model");
  QTest::addColumn<int>("mode");
  QTest::addColumn<int>("told");
  QTest::addColumn<QString>("entry");
  QTest::newRow("Zelto, first mode") << "Zelto" << 0 << 0 << "ZeltoUpgradeLidar";
  QTest::newRow("Zelto, PBL") << "Zelto" << 1 << 1 << "ZeltoUpgradeLidar";
  QTest::newRow("Zelto-KTC, PBL") << "Zelto-KTC" << 1 << 1 << "ZeltoUpgradeLidar";
  QTest::newRow("Marvo-KTC, Lidar") << "Marvo-KTC" << 0 << 0 << "MarvoUpgradeLidar";
  QTest::newRow("Marvo-KTC, Junction Box") << "Marvo-KTC" << 1 << 2 << "ZeltoUpgradeLidar";
}

void SmallSensorPageTest::PackageGoesToItsUpgrade() {
  QFETCH(QString, model);
  QFETCH(int, mode);
  QFETCH(int, told);
  QFETCH(QString, entry);
  Bench bench(model);
  QCOMPARE(bench.controller.TakeCalls(), (QVector<Call>{{"ZeltoSetUpgradeMode", {0}}}));
  bench.Choose("zeltoUpgradeMode", 1 - mode);
  bench.controller.TakeCalls();
  bench.Choose("zeltoUpgradeMode", mode);
  QCOMPARE(bench.controller.TakeCalls(), (QVector<Call>{{"ZeltoSetUpgradeMode", {told}}}));
  bench.Drop("file:///tmp/new one.bin");
  bench.Drop("file:///tmp/b.patch");
  QCOMPARE(bench.controller.calls, (QVector<Call>{{entry, {QUrl("file:///tmp/new one.bin")}},
                                                  {entry, {QUrl("file:///tmp/b.patch")}}}));
  QCOMPARE(bench.Text("upgradeFileName"), "b.patch");
}

// The controller keeps the mode that it was told last, so a choice that is no longer shown must not last
// there.
void SmallSensorPageTest::ModeBeginsAnewWithThePage() {
  Bench bench("Zelto");
  bench.Choose("zeltoUpgradeMode", 1);
  bench.controller.TakeCalls();
  bench.view.rootObject()->setProperty("selectedModel", "Zelto-KTC");  // the same choice of modes
  QVERIFY(bench.controller.calls.isEmpty());
  QCOMPARE(bench.Find("zeltoUpgradeMode")->property("displayText"), "PBL");
  bench.view.rootObject()->setProperty("selectedModel", "Marvo-KTC");
  QCOMPARE(bench.controller.calls.last(), (Call{"ZeltoSetUpgradeMode", {0}}));
  QCOMPARE(bench.Find("zeltoUpgradeMode")->property("displayText"), "Lidar");
}

void SmallSensorPageTest::OtherFilesAreNoPackages() {
  Bench bench("Zelto");
  bench.controller.TakeCalls();
  QTest::ignoreMessage(QtDebugMsg, "Rejected, need a *.bin or *.patch file");
  bench.Drop("file:///tmp/firmware.bin.zip");
  QVERIFY(bench.controller.calls.isEmpty());
  QCOMPARE(bench.Text("upgradeFileName"), "Rejected, need a *.bin or *.patch file");
  bench.Drop("file:///tmp/firmware.bin");
  QCOMPARE(bench.Text("upgradeFileName"), "firmware.bin");
}

void SmallSensorPageTest::ProgressShowsOnlyWhileUpgrading() {
  Bench bench("Zelto");
  StandIn& controller = bench.controller;
  QVERIFY(!bench.Shows("upgradeProgress") && !bench.Shows("upgradeNote"));
  controller.upgrading = true;
  controller.total = 400;
  emit controller.isUpgradingChanged();
  QVERIFY(bench.Shows("upgradeProgress") && bench.Shows("upgradeNote"));
  QVERIFY(!bench.Find("attachButton")->isEnabled() && !bench.Find("zeltoUpgradeMode")->isEnabled());
  QCOMPARE(bench.Text("upgradeProgress"), "0.00%");
  controller.progress = 133;
  QTRY_COMPARE(bench.Text("upgradeProgress"), "33.25%");
  controller.progress = 401;  // the last block was a short one
  QTRY_COMPARE(bench.Text("upgradeProgress"), "100.00%");
  QCOMPARE(bench.Find("upgradeProgress")->property("fillColor").value<QColor>(), QColor("green"));
  controller.upgrading = false;
  emit controller.isUpgradingChanged();
  QVERIFY(!bench.Shows("upgradeProgress") && !bench.Shows("upgradeNote"));
}

void SmallSensorPageTest::TabFollowsTheEye() {
  Bench bench("Marvo-KTC");
  bench.controller.info = {Row("Serial Number", "M1")};
  emit bench.controller.zeltoLidarInfoChanged();
  bench.view.resize(1300, 400);
  auto* const content = bench.view.rootObject()->property("contentItem").value<QQuickItem*>();
  bench.Find("zeltoInfo_0")->forceActiveFocus(Qt::TabFocusReason);
  QPointF last;
  int visited = 0;
  for (; bench.view.activeFocusItem()->objectName() != "sendButton"; ++visited) {
    QTest::keyClick(&bench.view, Qt::Key_Tab);
    const QQuickItem* const item = bench.view.activeFocusItem();
    const QPointF at = item->mapToItem(content, {});
    const bool onward = at.y() > last.y() + 5 || (at.y() > last.y() - 5 && at.x() > last.x());
    QVERIFY2(onward, qPrintable(item->objectName()));
    const qreal top = item->mapToScene({}).y();
    QVERIFY2(top >= 0 && top + item->height() <= bench.view.height(), qPrintable(item->objectName()));
    last = at;
  }
  QVERIFY(visited > 20);
}

}  // namespace

#include "small_sensor_page_test.moc"
