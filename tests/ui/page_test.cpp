#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <map>

#include "tests/ui/desk.h"

namespace {

constexpr int kNetworkPage = 2;
constexpr int kTimeSyncPage = 3;
constexpr int kScanPage = 4;
constexpr int kFovPage = 5;
constexpr int kUpgradePage = 6;
constexpr std::uint8_t kSetDestination = 0x20;

/// Gives the window a model with one page of so many fields.
void SelectLongPage(const Desk& desk, int rows) {
  const QDir folder(desk.folder.path());
  QVERIFY(folder.mkpath("Config/varID"));
  QFile table(folder.filePath("Config/varID/Long.csv"));
  QVERIFY(table.open(QIODevice::WriteOnly));
  table.write(
      "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
      "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n0,Page,Group\n");
  for (int row = 1; row <= rows; ++row) {
    table.write(QString("1,%1,0x05,0x06,%1,Field %1,1,uint8,0,,,,,,1_1_%1_1,1,,\n").arg(row).toUtf8());
  }
  table.close();
  const QString before = QDir::currentPath();
  QDir::setCurrent(folder.path());
  desk.manager->InitConfigFileParser("Long");
  QDir::setCurrent(before);
}

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
    desk.Key(Qt::Key_0, Qt::ControlModifier);
    QVERIFY(desk.Has("commandPage"));
  }

  void KeysSaveReadConnectAndOpen() {
    Desk desk;
    desk.Dial();
    EVENTUALLY_VERIFY(desk.manager->IsConnected() && !desk.manager->isReadingPage());
    desk.ShowPage(kNetworkPage);
    desk.sensor.ClearReceived();
    desk.Key(Qt::Key_F5);
    QVERIFY(desk.sensor.WaitReceived(0x08, 1, std::chrono::seconds(5)));
    const QString port = "field_" + desk.Place(kNetworkPage, "Destination Port");
    desk.Type(port, "2400");
    desk.Key(Qt::Key_S, Qt::ControlModifier);  // what is being typed counts
    QVERIFY(desk.NoticeShows("successWindow", ""));
    QCOMPARE(desk.sensor.ValueText("Destination Port"), "2400");
    desk.Key(Qt::Key_Return);
    desk.Key(Qt::Key_Return, Qt::ControlModifier);
    EVENTUALLY_VERIFY(!desk.manager->IsConnected());
    desk.Find("modelCombo")->forceActiveFocus(Qt::TabFocusReason);
    desk.Key(Qt::Key_Return);
    QVERIFY(desk.Property("modelCombo", "down").toBool());
    desk.Key(Qt::Key_Return);
    EVENTUALLY_VERIFY(!desk.Property("modelCombo", "down").toBool());
  }

  void TabGoesThroughTheWindowAsTheEyeDoes() {
    Desk desk;
    EVENTUALLY_COMPARE(desk.view().activeFocusItem(), desk.Find("tab_0"));
    desk.ShowPage(kNetworkPage);
    desk.Find("ipField")->forceActiveFocus(Qt::TabFocusReason);
    for (const char* name : {"portField", "udpPortField", "baudRateCombo", "modelCombo", "connectButton",
                             "restartButton", "aboutButton", "tab_2", "field_2_0_0"}) {
      desk.Key(Qt::Key_Tab);
      QVERIFY2(desk.Find(name)->hasActiveFocus(), name);
    }
  }

  void SearchGoesToTheRow() {
    Desk desk;
    EVENTUALLY_VERIFY(desk.Find("tab_0")->hasActiveFocus());
    desk.Key(Qt::Key_F, Qt::ControlModifier);
    EVENTUALLY_VERIFY(desk.Find("searchField")->hasActiveFocus());
    for (const char letter : {'p', 't', 'p'}) QTest::keyClick(&desk.view(), letter);
    EVENTUALLY_VERIFY(desk.Property("searchList", "count").toInt() > 1);
    desk.Key(Qt::Key_Escape);
    EVENTUALLY_VERIFY(desk.Find("tab_0")->hasActiveFocus());
    desk.Key(Qt::Key_F, Qt::ControlModifier);
    EVENTUALLY_VERIFY(desk.Find("searchField")->hasActiveFocus());
    for (const char letter : {'l', 'o', 'c', 'k', ' ', 't'}) QTest::keyClick(&desk.view(), letter);
    desk.Key(Qt::Key_Return);
    const QString field = "field_" + desk.Place(kTimeSyncPage, "PTP Lock Time");
    EVENTUALLY_VERIFY(desk.Has(field) && desk.Find(field)->hasActiveFocus());
  }

  void DetailsAndPlotOfALiveRow() {
    Desk desk;
    desk.ShowPage(kNetworkPage);
    desk.Find("field_" + desk.Place(kNetworkPage, "Destination Port"))->forceActiveFocus(Qt::TabFocusReason);
    desk.ShowPage(kScanPage);
    desk.ShowPage(kNetworkPage);
    QCOMPARE(desk.Text("detailsTitle") + ' ' + desk.Text("detail_Value"), "Destination Port 2368");
    QVERIFY(desk.Connect());
    desk.ShowPage(kTimeSyncPage);
    desk.Find("field_" + desk.Place(kTimeSyncPage, "GPS Satellites"))->forceActiveFocus(Qt::TabFocusReason);
    EVENTUALLY_COMPARE(desk.Text("detailsTitle"), "GPS Satellites");
    QCOMPARE(desk.Property("detail_Origin", "text"), "read from the sensor");
    EVENTUALLY_VERIFY(desk.Has("plot"));
    desk.Click("pinButton");
    desk.Find("field_" + desk.Place(kTimeSyncPage, "PTP Master Offset (ns)"))->forceActiveFocus();
    EVENTUALLY_COMPARE(desk.Property("plot", "series").toStringList().size(), 2);
    const QQuickItem* const plot = desk.Find("plot");
    QTest::mouseMove(&desk.view(), plot->mapToScene({plot->width() / 2, plot->height() / 2}).toPoint());
    EVENTUALLY_VERIFY(desk.Text("plotReading").contains("GPS Satellites"));

    const QString file = desk.folder.filePath("readings.csv");
    const QStringList series = desk.Property("plot", "series").toStringList();
    QString fault;
    QMetaObject::invokeMethod(desk.manager->history(), "saveCsv", Q_RETURN_ARG(QString, fault),
                              Q_ARG(QUrl, QUrl::fromLocalFile(file)), Q_ARG(QStringList, series));
    QCOMPARE(fault, "");
    QFile table(file);
    QVERIFY(table.open(QIODevice::ReadOnly));
    QCOMPARE(table.readLine(), "time,name,unit,value\n");
    QVERIFY(table.readLine().contains(",\"GPS Satellites\",\"\","));

    desk.Key(Qt::Key_F1);
    EVENTUALLY_VERIFY(!desk.Has("detailsPane"));
    desk.Click("detailsButton");
    EVENTUALLY_VERIFY(desk.Has("detailsPane"));
  }

  void LongPageIsWalkedByKeyAndKeepsAnEdit() {
    constexpr int kRows = 90;
    Desk desk;
    SelectLongPage(desk, kRows);
    const auto field = [](int row) { return QString("field_0_0_%1").arg(row); };
    const auto focused = [&desk] { return desk.view().activeFocusItem()->objectName(); };
    QVERIFY(!desk.Has(field(kRows - 1)));
    desk.Find("tab_3")->forceActiveFocus(Qt::TabFocusReason);
    for (int row = 0; row < kRows; ++row) {
      desk.Key(Qt::Key_Tab);
      QCOMPARE(focused(), field(row));
      const QRectF place = desk.Find(field(row))->mapRectToItem(desk.Find("rows_0"), {0, 0, 1, 29});
      QVERIFY2(place.top() >= 0 && place.bottom() <= desk.Find("rows_0")->height(), qPrintable(field(row)));
    }
    desk.Key(Qt::Key_Tab);
    QCOMPARE(focused(), "cancelButton_0");
    desk.Key(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(focused(), field(kRows - 1));
    desk.Find("tab_3")->forceActiveFocus(Qt::TabFocusReason);
    desk.Key(Qt::Key_Tab);
    QCOMPARE(focused(), field(0));

    desk.Type(field(0), "12");
    for (int page = 0; page < 5; ++page) desk.Key(Qt::Key_PageDown);
    EVENTUALLY_VERIFY(desk.Has(field(kRows - 1)) && !desk.Has(field(5)));
    QCOMPARE(desk.Text(field(0)), "12");
    desk.Key(Qt::Key_Tab);
    QCOMPARE(focused(), field(1));
    QCOMPARE(desk.Text("editCount_0"), "1 change not saved yet");
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
      refreshes[place] = std::make_unique<QSignalSpy>(desk.Find("row_" + place), SIGNAL(valueTextChanged()));
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
    desk.sensor.AddFault("0x08=late:700");
    desk.Key(Qt::Key_3, Qt::ControlModifier);
    QVERIFY(!desk.Has("loadingBar"));  // not for a blink
    EVENTUALLY_VERIFY(desk.Has("loadingBar"));
    EVENTUALLY_VERIFY(!desk.Has("loadingBar"));
    QVERIFY(!desk.manager->isReadingPage());
  }

  void EveryKindOfRowIsThere() {
    Desk desk;
    for (int page = 0; page < desk.manager->level1List().size(); ++page) {
      desk.ShowPage(page);
      for (const QVariant& row : desk.manager->level2List()[page].toList()) {
        const QVariantList entry = row.toList();
        const QString group = QString("%1_%2").arg(page).arg(entry[3].toInt());
        const bool is_heading = entry[4].toInt() < 0;
        const QString name = is_heading ? "heading_" + group : "row_" + group + '_' + entry[4].toString();
        QCOMPARE(desk.Property(name, "label"), entry[0]);
      }
      QCOMPARE(desk.Has(QString("saveButton_%1").arg(page)), page != kUpgradePage);
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
    EVENTUALLY_VERIFY(!desk.manager->isReadingPage());
    QCOMPARE(desk.Text(field), "12");
    desk.Key(Qt::Key_Escape);
    QCOMPARE(desk.Text(field), "4000");
    QCOMPARE(desk.manager->getSetMapSize(), 0);
  }

  void EditIsMarkedSavedAndUnmarked() {
    Desk desk;
    desk.Click("saveButton_0");
    QVERIFY(desk.Dismiss("successWindow", "Please connect to lidar first", Qt::Key_Escape));
    QVERIFY(desk.Connect());
    desk.ShowPage(kNetworkPage);
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("successWindow", "Nothing to be saved"));
    const QString place = desk.Place(kNetworkPage, "Destination Port");
    const auto edited = [&] { return desk.Property("row_" + place, "edited").toBool(); };
    desk.Enter("field_" + place, desk.Text("field_" + place));
    QVERIFY(!edited());
    desk.Enter("field_" + place, "2400");
    QVERIFY(edited());
    QCOMPARE(desk.Text("editCount_2"), "1 change not saved yet");
    desk.ShowPage(kScanPage);
    desk.Click("saveButton_4");
    QVERIFY(desk.NoticeShows("successWindow", "Nothing to be saved"));
    QCOMPARE(desk.Notice("successWindow")->property("heading").toString(), "Note");
    desk.Key(Qt::Key_Return);
    desk.ShowPage(kNetworkPage);
    QVERIFY(edited());
    desk.Click("cancelButton_2");
    EVENTUALLY_COMPARE(desk.Text("field_" + place), "2368");
    QVERIFY(!edited());
    QCOMPARE(desk.Text("editCount_2"), "No changes");

    desk.Enter("field_" + place, "80x");
    QCOMPARE(desk.Property("row_" + place, "verdict"), "is no number");
    desk.Click("saveButton_2");
    QVERIFY(
        desk.Dismiss("errorWindow", "Destination Port can't be \"80x\". It has to be a number from 1024"));
    desk.Enter("field_" + place, "80");  // the table says 1024 to 65535
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("messageWindow",
                         "The Destination Port set by the user was detected to be outside the range "
                         "specified in the config file. Do you wish to continue?\n\n"
                         "Destination Port: 80, allowed 1024 to 65535",
                         Qt::Key_Escape));
    QCOMPARE(desk.Property("row_" + place, "verdict"), "is out of range");
    QVERIFY(desk.sensor.Received(kSetDestination).empty());
    desk.Click("saveButton_2");
    QVERIFY(desk.NoticeShows("messageWindow", "Destination Port"));
    desk.Click("noticeAcceptButton");
    QVERIFY(!desk.Property("saveButton_2", "enabled").toBool());  // while this save runs
    QVERIFY(desk.NoticeShows("successWindow", "Set Lidar Successfully"));
    QCOMPARE(desk.Notice("successWindow")->property("heading").toString(), "Saved");
    desk.Key(Qt::Key_Return);
    QCOMPARE(desk.sensor.ValueText("Destination Port"), "80");
    EVENTUALLY_VERIFY(!edited());
    QVERIFY(desk.Property("saveButton_2", "enabled").toBool());
    QCOMPARE(desk.Text("field_" + place), "80");
  }

  void RowsTellWhatBecameOfTheirValue() {
    Desk desk;
    const auto strip = [&] { return desk.Text("staleStrip_2"); };
    desk.ShowPage(kNetworkPage);
    const QString row = "row_" + desk.Place(kNetworkPage, "Destination Port");
    const QString field = "field_" + desk.Place(kNetworkPage, "Destination Port");
    const auto note = [&] { return desk.Property(row, "note").toString(); };
    QCOMPARE(strip(), "Not connected. Values are the table's defaults");
    QVERIFY(desk.Property(row, "dimmed").toBool());
    QVERIFY(desk.Connect());
    desk.ShowPage(kNetworkPage);
    QVERIFY(!desk.Has("staleStrip_2") && !desk.Property(row, "dimmed").toBool());

    desk.Enter(field, "2400");
    QCOMPARE(note(), "was 2368");
    desk.sensor.AddFault("0x20=error:5");
    desk.Click("saveButton_2");
    QVERIFY(desk.NoticeShows("errorWindow", "SET [0x20] FAILED"));
    desk.Key(Qt::Key_Return);
    QVERIFY(desk.Dismiss("errorWindow", "Set Failed"));
    QCOMPARE(note(), "refused, code 5");
    desk.sensor.ClearFaults();
    desk.sensor.AddFault("0x20=clamp:1200");
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("successWindow", "0 of 1 verified, Destination Port holds 1200 instead of 2400"));
    QCOMPARE(note(), "sent 2400, sensor holds 1200");
    QVERIFY(desk.Text("statusOutcome").contains("holds 1200"));
    desk.sensor.ClearFaults();
    desk.Enter(field, "2401");
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("successWindow", "1 of 1 verified"));
    QCOMPARE(desk.Property(row, "values").value<QObject*>()->property("origin"), "verified");

    desk.sensor.AddFault("0x20=clamp:1200");
    desk.Enter(field, "2402");
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("successWindow", "holds 1200 instead of 2402"));
    desk.manager->Stop();
    EVENTUALLY_VERIFY(strip().startsWith("Not connected. Values last read "));
    QVERIFY(desk.Property(row, "dimmed").toBool());
    QCOMPARE(note(), "");
  }

  void EditsAreListedUndoneAndAskedAbout() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.ShowPage(kNetworkPage);
    const QString field = "field_" + desk.Place(kNetworkPage, "Destination Port");
    desk.Enter(field, "2400");
    desk.Key(Qt::Key_Z, Qt::ControlModifier);  // in the field that has been left by Enter
    QCOMPARE(desk.Text(field), "2368");
    desk.ShowPage(kScanPage);
    desk.Key(Qt::Key_Z, Qt::ShiftModifier | Qt::ControlModifier);
    EVENTUALLY_VERIFY(desk.Has(field) && desk.Find(field)->hasActiveFocus());  // the page of the edit
    QCOMPARE(desk.Text(field), "2400");
    desk.ShowPage(kScanPage);
    desk.Choose("field_" + desk.Place(kScanPage, "Spin Direction"), 1);
    for (const char* tab : {"tab_2", "tab_4"}) QCOMPARE(desk.Property(tab, "edits").toInt(), 1);

    desk.Click("connectButton");
    QVERIFY(
        desk.Dismiss("messageWindow", "Destination Port: 2368 → 2400"));  // Enter takes the harmless choice
    QVERIFY(desk.manager->IsConnected());
    desk.Click("editsButton");
    desk.Click("takeBack_1");
    EVENTUALLY_COMPARE(desk.Property("tab_4", "edits").toInt(), 0);
    QCOMPARE(desk.Text("editTexts_0"), "2368 → 2400");
    desk.Key(Qt::Key_Escape);
    emit desk.manager->connectionCheckFinished(false);  // the check never asks
    EVENTUALLY_VERIFY(!desk.manager->IsConnected());
    QCOMPARE(desk.Property("tab_2", "edits").toInt(), 0);

    desk.ShowPage(kNetworkPage);
    desk.Enter(field, "2400");
    desk.Find("modelCombo")->forceActiveFocus(Qt::TabFocusReason);
    desk.Key(Qt::Key_Down);
    QVERIFY(desk.NoticeShows("messageWindow", "Another model drops the changes that are not saved"));
    QCOMPARE(desk.Property("modelCombo", "currentText"), "Quenta");
    desk.Click("noticeAcceptButton");
    EVENTUALLY_COMPARE(desk.Property("modelCombo", "currentText"), "Zelto");
    QCOMPARE(desk.manager->getSetMapSize(), 0);
  }

  void SaveAsksBeforeItWritesWhatWasNeverRead() {
    const QString question =
        "Saving also writes fields that have never been read from this sensor, with the "
        "values shown here: Destination IP. Do you wish to continue?";
    Desk desk;
    QVERIFY(desk.Connect());
    desk.sensor.AddFault("0x08=error");
    desk.ShowPage(kNetworkPage);
    desk.Enter("field_" + desk.Place(kNetworkPage, "Destination Port"), "2400");
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("messageWindow", question));  // Enter takes the harmless choice
    QVERIFY(desk.sensor.Received(kSetDestination).empty());
    desk.Click("saveButton_2");
    QVERIFY(desk.NoticeShows("messageWindow", question));
    desk.Click("noticeAcceptButton");
    QVERIFY(desk.Dismiss("successWindow", "Set Lidar Successfully"));
  }

  void ComboAndSwitch() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.ShowPage(kScanPage);
    const QString direction = desk.Place(kScanPage, "Spin Direction");
    const QString angle = desk.Place(kScanPage, "Sync Angle (deg)");
    desk.Choose("field_" + direction, 1);
    QVERIFY(desk.Property("row_" + direction, "edited").toBool());
    desk.Click("switch_" + angle);
    QVERIFY(!desk.Property("switch_" + angle, "checked").toBool());
    QVERIFY(!desk.Find("field_" + angle)->isEnabled());
    QCOMPARE(desk.Text("field_" + angle), "0");
    desk.Click("saveButton_4");
    QVERIFY(desk.NoticeShows("successWindow", "Set Lidar Successfully"));
    QCOMPARE(desk.sensor.ValueText("Spin Direction"), "1");
    QCOMPARE(desk.sensor.ValueText("Sync Angle"), "0");
  }

  void AnotherModelTakesThePageAwayAtOnce() {
    Desk desk;
    QVERIFY(desk.Connect());
    desk.ShowPage(kScanPage);
    desk.manager->Stop();
    for (const char* model : {"Zelto-KTC", "Quenta"}) {
      QMetaObject::invokeMethod(desk.root, "changeModel", Q_ARG(QVariant, model));
    }
    desk.ShowPage(kScanPage);  // a call into a row that is gone would be a warning, which fails the program
  }

  void FieldOfViewBoxes() {
    Desk desk;
    desk.ShowPage(kFovPage);
    const QString box = "fov_" + desk.Place(kFovPage, "Channel Field of View") + "_";
    QCOMPARE(desk.Text(box + "0"), "0.0");
    QCOMPARE(desk.Text(box + "9"), "360.0");
    desk.Enter(box + "1", "42.5");
    desk.Enter(box + "6", "90");
    QCOMPARE(desk.Text(box + "6"), "90.0");
    QCOMPARE(desk.manager->FovList().value(1), "42.5");
    desk.Enter(box + "1", "361");
    QVERIFY(desk.NoticeShows("errorWindow", "Input value of fov is invalid"));
    QCOMPARE(desk.Text(box + "1"), "42.5");
  }

  void UpgradeTakesPatchFilesAndForbidsDisconnecting() {
    Desk desk;
    desk.ShowPage(kUpgradePage);
    desk.Drop("new one.patch", "x");
    QVERIFY(desk.Dismiss("errorWindow", "Connect to the sensor first"));
    QVERIFY(desk.Connect());
    desk.Drop("firmware.patch.bin");
    QVERIFY(desk.Dismiss("errorWindow", "Upgrade package rejected: it has to be a .patch file"));
    QCOMPARE(desk.Text("upgradeFileName") + desk.Text("upgradeProgress"), "0.00%");
    const QByteArray package = "VARKEL-SIM FIRMWARE 4.1.2.9 2027-03-04\n" + QByteArray(20000, 'x');
    desk.Drop("new one.patch", package);
    QVERIFY(desk.NoticeShows("messageWindow",
                             "Package: new one.patch\nSize: 20,039 bytes\nFirmware Version: 3."));
    QCOMPARE(desk.Notice("messageWindow")->property("message").toString().count("Firmware Version"), 1);
    desk.Key(Qt::Key_Return);
    QVERIFY(!desk.manager->IsUpgrading());
    desk.Drop("new one.patch", package);
    desk.Click("noticeAcceptButton");
    EVENTUALLY_VERIFY(desk.manager->IsUpgrading());
    QCOMPARE(desk.Text("upgradeFileName"), "new one.patch");
    QVERIFY(!desk.Find("attachButton")->isEnabled());
    desk.Click("connectButton");
    QVERIFY(desk.Dismiss("errorWindow", "Disconnect REJECTED. Lidar is upgrading."));
    QVERIFY(desk.NoticeShows("successWindow", "Upgrade package transmitted successfully."));
    EVENTUALLY_COMPARE(desk.Text("upgradeProgress"), "100.00%");
    QCOMPARE(desk.Property("upgradeProgress", "fillColor").value<QColor>(), QColor("green"));
  }
};
const RegisterTest<PageTest> registration;

}  // namespace

#include "page_test.moc"
