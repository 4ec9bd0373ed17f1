#include <QSignalSpy>
#include <map>

#include "tests/ui/ui_test.h"

namespace {

constexpr int kNetworkPage = 2;
constexpr int kTimeSyncPage = 3;
constexpr int kScanPage = 4;

class PageTest : public QObject {
  Q_OBJECT
 private slots:
  void KeysChooseThePage() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.sensor.ClearReceived();
    desk.Key(Qt::Key_3, Qt::ControlModifier);
    QVERIFY(desk.Has("page_2") && !desk.Has("page_0"));
    QVERIFY(desk.sensor.WaitReceived(0x08, 1, std::chrono::seconds(5)));  // the page's own command
    desk.Key(Qt::Key_9, Qt::ControlModifier);
    QVERIFY(desk.Has("logPage"));
    desk.Click("tab_9");
    QVERIFY(desk.Has("commandPage"));
    desk.Key(Qt::Key_Up);
    QVERIFY(desk.Has("logPage"));
  }

  void TabGoesThroughTheWindowAsTheEyeDoes() {
    Desk desk;
    QTRY_COMPARE(desk.view().activeFocusItem(), desk.Find("ipField"));
    desk.ShowPage(kNetworkPage);
    desk.Find("ipField")->forceActiveFocus(Qt::TabFocusReason);
    for (const char* name : {"portField", "udpPortField", "baudRateCombo", "modelCombo", "connectButton",
                             "restartButton", "aboutButton", "tab_0"}) {
      desk.Key(Qt::Key_Tab);
      QVERIFY2(desk.Find(name)->hasActiveFocus(), name);
    }
    desk.Find("tab_9")->forceActiveFocus(Qt::TabFocusReason);
    for (qreal last_y = 0; desk.view().activeFocusItem()->objectName() != "saveButton_2";) {
      desk.Key(Qt::Key_Tab);
      const qreal y = desk.view().activeFocusItem()->mapToScene({}).y();
      QVERIFY2(y >= last_y, qPrintable(desk.view().activeFocusItem()->objectName()));
      last_y = y;
    }
  }

  void ARoundTouchesOnlyTheRowsThatChanged() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.ShowPage(kTimeSyncPage);
    for (const char* name : {"PTP Master Offset", "PTP Path Delay", "PTP Lock Time", "GPS Satellites"}) {
      desk.sensor.SetValue(name, desk.sensor.ValueText(name));  // it stops moving
    }
    QSignalSpy rounds(desk.manager, &VarkelManager::myTimerMapChanged);
    const auto wait_two_rounds = [&rounds] { return rounds.wait() && rounds.wait(); };
    QVERIFY(wait_two_rounds());

    std::map<QString, std::unique_ptr<QSignalSpy>> refreshes;
    for (const QVariant& row : desk.manager->level2List()[kTimeSyncPage].toList()) {
      if (row.toList()[4].toInt() < 0) continue;
      const QString place = desk.Place(kTimeSyncPage, row.toList()[0].toString());
      refreshes[place] = std::make_unique<QSignalSpy>(desk.Find("row_" + place), SIGNAL(refreshed()));
    }
    const QString changed = desk.Place(kTimeSyncPage, "GPS Satellites");
    QVERIFY(desk.Property("row_" + changed, "live").toBool());
    desk.sensor.SetValue("GPS Satellites", "3");
    QVERIFY(wait_two_rounds() && wait_two_rounds());
    QCOMPARE(desk.Text("field_" + changed), "3");
    for (const auto& [place, spy] : refreshes) QCOMPARE(spy->size(), place == changed ? 1 : 0);
  }

  void SlowPageShowsThatItIsBusy() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.sensor.Misbehave("0x08=late:700");
    desk.Key(Qt::Key_3, Qt::ControlModifier);
    QVERIFY(!desk.Has("loadingBar"));  // not for a blink
    QTRY_VERIFY(desk.Has("loadingBar"));
    QTRY_VERIFY(!desk.Has("loadingBar"));
    QVERIFY(!desk.manager->isReadingPage());
  }

  void EveryKindOfRowIsThere() {
    Desk desk;
    for (int page = 0; page < desk.manager->level1List().size(); ++page) {
      desk.ShowPage(page);
      bool upgrade = false;
      for (const QVariant& row : desk.manager->level2List()[page].toList()) {
        const QVariantList entry = row.toList();
        const int kind = entry[1].toInt();
        const QString group = QString("%1_%2").arg(page).arg(entry[3].toInt());
        const bool heading = entry[4].toInt() < 0;
        const QString name = heading ? "heading_" + group : "row_" + group + '_' + entry[4].toString();
        upgrade = upgrade || kind == 4;
        QCOMPARE(desk.Property(name, "label"), entry[0]);
        if (kind != 4 && !heading) QCOMPARE(desk.Find(name)->height(), kind == 5 ? 80.0 : 35.0);
      }
      QCOMPARE(desk.Has(QString("saveButton_%1").arg(page)), !upgrade);
    }
    desk.ShowPage(kScanPage);
    QCOMPARE(desk.Property("field_" + desk.Place(kScanPage, "Spin Rate"), "displayText"), "600 rpm (10 Hz)");
  }

  void RefreshLeavesATypingUserAlone() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.ShowPage(kNetworkPage);
    const QString field = "field_" + desk.Place(kNetworkPage, "Destination Port");
    desk.Type(field, "12");
    desk.sensor.SetValue("Destination Port", "4000");
    desk.manager->ReadPageInBackground(kNetworkPage);
    QTRY_VERIFY(!desk.manager->isReadingPage());
    QCOMPARE(desk.Text(field), "12");
    desk.Key(Qt::Key_Escape);
    QCOMPARE(desk.Text(field), "4000");
    QCOMPARE(desk.manager->getSetMapSize(), 0);
  }
};
const RegisterTest<PageTest> registration;

}  // namespace

#include "page_test.moc"
