#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <map>

#include "tests/ui/window_driver.h"

namespace {

constexpr int kNetworkPage = 2;
constexpr int kTimeSyncPage = 3;
constexpr int kScanPage = 4;
constexpr int kFovPage = 5;
constexpr int kUpgradePage = 6;
constexpr std::uint8_t kSetDestination = 0x20;

/// Gives the window a model with one page of that many fields.
void SelectLongPage(const WindowDriver& driver, int rows) {
  const QDir folder(driver.folder.path());
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
  driver.manager->InitConfigFileParser("Long");
  QDir::setCurrent(before);
}

class PageTest : public QObject {
  Q_OBJECT
 private slots:
  void KeysChooseThePage() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.sensor.ClearReceived();
    driver.Key(Qt::Key_3, Qt::ControlModifier);
    QVERIFY(driver.Has("page_2") && !driver.Has("page_0"));
    QVERIFY(driver.sensor.WaitReceived(0x08, 1, std::chrono::seconds(5)));  // the page's own command
    driver.Key(Qt::Key_9, Qt::ControlModifier);
    QVERIFY(driver.Has("logPage"));
    driver.Click("tab_9");
    QVERIFY(driver.Has("commandPage"));
    driver.Key(Qt::Key_Up);
    QVERIFY(driver.Has("logPage"));
    driver.Key(Qt::Key_0, Qt::ControlModifier);
    QVERIFY(driver.Has("commandPage"));
  }

  void KeysSaveReadConnectAndOpen() {
    WindowDriver driver;
    driver.Dial();
    EVENTUALLY_VERIFY(driver.manager->IsConnected() && !driver.manager->isReadingPage());
    driver.ShowPage(kNetworkPage);
    driver.sensor.ClearReceived();
    driver.Key(Qt::Key_F5);
    QVERIFY(driver.sensor.WaitReceived(0x08, 1, std::chrono::seconds(5)));
    const QString port = "field_" + driver.Place(kNetworkPage, "Destination Port");
    driver.Type(port, "2400");
    driver.Key(Qt::Key_S, Qt::ControlModifier);  // also saves what is being typed
    QVERIFY(driver.NoticeShows("successWindow", ""));
    QCOMPARE(driver.sensor.ValueText("Destination Port"), "2400");
    driver.Key(Qt::Key_Return);
    driver.Key(Qt::Key_Return, Qt::ControlModifier);
    EVENTUALLY_VERIFY(!driver.manager->IsConnected());
    driver.Find("modelCombo")->forceActiveFocus(Qt::TabFocusReason);
    driver.Key(Qt::Key_Return);
    QVERIFY(driver.Property("modelCombo", "down").toBool());
    driver.Key(Qt::Key_Return);
    EVENTUALLY_VERIFY(!driver.Property("modelCombo", "down").toBool());
  }

  void TabFollowsTheVisualOrder() {
    WindowDriver driver;
    EVENTUALLY_COMPARE(driver.view().activeFocusItem(), driver.Find("tab_0"));
    driver.ShowPage(kNetworkPage);
    driver.Find("ipField")->forceActiveFocus(Qt::TabFocusReason);
    for (const char* name : {"portField", "udpPortField", "baudRateCombo", "modelCombo", "connectButton",
                             "restartButton", "aboutButton", "tab_2", "field_2_0_0"}) {
      driver.Key(Qt::Key_Tab);
      QVERIFY2(driver.Find(name)->hasActiveFocus(), name);
    }
  }

  void SearchGoesToTheRow() {
    WindowDriver driver;
    EVENTUALLY_VERIFY(driver.Find("tab_0")->hasActiveFocus());
    driver.Key(Qt::Key_F, Qt::ControlModifier);
    EVENTUALLY_VERIFY(driver.Find("searchField")->hasActiveFocus());
    for (const char letter : {'p', 't', 'p'}) QTest::keyClick(&driver.view(), letter);
    EVENTUALLY_VERIFY(driver.Property("searchList", "count").toInt() > 1);
    driver.Key(Qt::Key_Escape);
    EVENTUALLY_VERIFY(driver.Find("tab_0")->hasActiveFocus());
    driver.Key(Qt::Key_F, Qt::ControlModifier);
    EVENTUALLY_VERIFY(driver.Find("searchField")->hasActiveFocus());
    for (const char letter : {'l', 'o', 'c', 'k', ' ', 't'}) QTest::keyClick(&driver.view(), letter);
    driver.Key(Qt::Key_Return);
    const QString field = "field_" + driver.Place(kTimeSyncPage, "PTP Lock Time");
    EVENTUALLY_VERIFY(driver.Has(field) && driver.Find(field)->hasActiveFocus());
  }

  void DetailsAndPlotOfALiveRow() {
    WindowDriver driver;
    driver.ShowPage(kNetworkPage);
    driver.Find("field_" + driver.Place(kNetworkPage, "Destination Port"))
        ->forceActiveFocus(Qt::TabFocusReason);
    driver.ShowPage(kScanPage);
    driver.ShowPage(kNetworkPage);
    QCOMPARE(driver.Text("detailsTitle") + ' ' + driver.Text("detail_Value"), "Destination Port 2368");
    QVERIFY(driver.Connect());
    driver.ShowPage(kTimeSyncPage);
    driver.Find("field_" + driver.Place(kTimeSyncPage, "GPS Satellites"))
        ->forceActiveFocus(Qt::TabFocusReason);
    EVENTUALLY_COMPARE(driver.Text("detailsTitle"), "GPS Satellites");
    QCOMPARE(driver.Property("detail_Origin", "text"), "read from the sensor");
    EVENTUALLY_VERIFY(driver.Has("plot"));
    driver.Click("pinButton");
    driver.Find("field_" + driver.Place(kTimeSyncPage, "PTP Master Offset (ns)"))->forceActiveFocus();
    EVENTUALLY_COMPARE(driver.Property("plot", "series").toStringList().size(), 2);
    const QQuickItem* const plot = driver.Find("plot");
    QTest::mouseMove(&driver.view(), plot->mapToScene({plot->width() / 2, plot->height() / 2}).toPoint());
    EVENTUALLY_VERIFY(driver.Text("plotReading").contains("GPS Satellites"));

    const QString file = driver.folder.filePath("readings.csv");
    const QStringList series = driver.Property("plot", "series").toStringList();
    QString fault;
    QMetaObject::invokeMethod(driver.manager->history(), "saveCsv", Q_RETURN_ARG(QString, fault),
                              Q_ARG(QUrl, QUrl::fromLocalFile(file)), Q_ARG(QStringList, series));
    QCOMPARE(fault, "");
    QFile table(file);
    QVERIFY(table.open(QIODevice::ReadOnly));
    QCOMPARE(table.readLine(), "time,name,unit,value\n");
    QVERIFY(table.readLine().contains(",\"GPS Satellites\",\"\","));

    driver.Key(Qt::Key_F1);
    EVENTUALLY_VERIFY(!driver.Has("detailsPane"));
    driver.Click("detailsButton");
    EVENTUALLY_VERIFY(driver.Has("detailsPane"));
  }

  void LongPageIsWalkedByKeyAndKeepsAnEdit() {
    constexpr int kRows = 90;
    WindowDriver driver;
    SelectLongPage(driver, kRows);
    const auto field = [](int row) { return QString("field_0_0_%1").arg(row); };
    const auto focused = [&driver] { return driver.view().activeFocusItem()->objectName(); };
    QVERIFY(!driver.Has(field(kRows - 1)));
    driver.Find("tab_3")->forceActiveFocus(Qt::TabFocusReason);
    for (int row = 0; row < kRows; ++row) {
      driver.Key(Qt::Key_Tab);
      QCOMPARE(focused(), field(row));
      const QRectF place = driver.Find(field(row))->mapRectToItem(driver.Find("rows_0"), {0, 0, 1, 29});
      QVERIFY2(place.top() >= 0 && place.bottom() <= driver.Find("rows_0")->height(), qPrintable(field(row)));
    }
    driver.Key(Qt::Key_Tab);
    QCOMPARE(focused(), "cancelButton_0");
    driver.Key(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(focused(), field(kRows - 1));
    driver.Find("tab_3")->forceActiveFocus(Qt::TabFocusReason);
    driver.Key(Qt::Key_Tab);
    QCOMPARE(focused(), field(0));

    driver.Type(field(0), "12");
    for (int page = 0; page < 5; ++page) driver.Key(Qt::Key_PageDown);
    EVENTUALLY_VERIFY(driver.Has(field(kRows - 1)) && !driver.Has(field(5)));
    QCOMPARE(driver.Text(field(0)), "12");
    driver.Key(Qt::Key_Tab);
    QCOMPARE(focused(), field(1));
    QCOMPARE(driver.Text("editCount_0"), "1 change not saved yet");
  }

  void ARoundTouchesOnlyTheRowsThatChanged() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.ShowPage(kTimeSyncPage);
    for (const char* name : {"PTP Master Offset", "PTP Path Delay", "PTP Lock Time", "GPS Satellites"}) {
      driver.sensor.SetValue(name, driver.sensor.ValueText(name));  // stops it from changing
    }
    QSignalSpy rounds(driver.manager, &VarkelManager::myTimerMapChanged);
    const auto wait_two_rounds = [&rounds] { return rounds.wait() && rounds.wait(); };
    QVERIFY(wait_two_rounds());

    std::map<QString, std::unique_ptr<QSignalSpy>> refreshes;
    for (const QVariant& row : driver.manager->level2List()[kTimeSyncPage].toList()) {
      if (row.toList()[4].toInt() < 0) continue;
      const QString place = driver.Place(kTimeSyncPage, row.toList()[0].toString());
      refreshes[place] =
          std::make_unique<QSignalSpy>(driver.Find("row_" + place), SIGNAL(valueTextChanged()));
    }
    const QString changed = driver.Place(kTimeSyncPage, "GPS Satellites");
    QVERIFY(driver.Property("row_" + changed, "live").toBool());
    driver.sensor.SetValue("GPS Satellites", "3");
    QVERIFY(wait_two_rounds() && wait_two_rounds());
    QCOMPARE(driver.Text("field_" + changed), "3");
    for (const auto& [place, spy] : refreshes) QCOMPARE(spy->size(), place == changed ? 1 : 0);
  }

  void SlowPageShowsThatItIsBusy() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.sensor.AddFault("0x08=late:2000");
    driver.Key(Qt::Key_3, Qt::ControlModifier);
    QVERIFY(!driver.Has("loadingBar"));  // not for a short wait
    EVENTUALLY_VERIFY(driver.Has("loadingBar"));
    EVENTUALLY_VERIFY(!driver.Has("loadingBar"));
    QVERIFY(!driver.manager->isReadingPage());
  }

  void EveryKindOfRowIsThere() {
    WindowDriver driver;
    for (int page = 0; page < driver.manager->level1List().size(); ++page) {
      driver.ShowPage(page);
      for (const QVariant& row : driver.manager->level2List()[page].toList()) {
        const QVariantList entry = row.toList();
        const QString group = QString("%1_%2").arg(page).arg(entry[3].toInt());
        const bool is_heading = entry[4].toInt() < 0;
        const QString name = is_heading ? "heading_" + group : "row_" + group + '_' + entry[4].toString();
        QCOMPARE(driver.Property(name, "label"), entry[0]);
      }
      QCOMPARE(driver.Has(QString("saveButton_%1").arg(page)), page != kUpgradePage);
    }
    driver.ShowPage(kScanPage);
    QCOMPARE(driver.Property("field_" + driver.Place(kScanPage, "Spin Rate"), "displayText"),
             "600 rpm (10 Hz)");
  }

  void RefreshLeavesATypingUserAlone() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.ShowPage(kNetworkPage);
    const QString field = "field_" + driver.Place(kNetworkPage, "Destination Port");
    driver.Type(field, "12");
    driver.sensor.SetValue("Destination Port", "4000");
    driver.manager->ReadPageInBackground(kNetworkPage);
    EVENTUALLY_VERIFY(!driver.manager->isReadingPage());
    QCOMPARE(driver.Text(field), "12");
    driver.Key(Qt::Key_Escape);
    QCOMPARE(driver.Text(field), "4000");
    QCOMPARE(driver.manager->getSetMapSize(), 0);
  }

  void EditIsMarkedSavedAndUnmarked() {
    WindowDriver driver;
    driver.Click("saveButton_0");
    QVERIFY(driver.Dismiss("successWindow", "Please connect to lidar first", Qt::Key_Escape));
    QVERIFY(driver.Connect());
    driver.ShowPage(kNetworkPage);
    driver.Click("saveButton_2");
    QVERIFY(driver.Dismiss("successWindow", "Nothing to be saved"));
    const QString place = driver.Place(kNetworkPage, "Destination Port");
    const auto edited = [&] { return driver.Property("row_" + place, "edited").toBool(); };
    driver.Enter("field_" + place, driver.Text("field_" + place));
    QVERIFY(!edited());
    driver.Enter("field_" + place, "2400");
    QVERIFY(edited());
    QCOMPARE(driver.Text("editCount_2"), "1 change not saved yet");
    driver.ShowPage(kScanPage);
    driver.Click("saveButton_4");
    QVERIFY(driver.NoticeShows("successWindow", "Nothing to be saved"));
    QCOMPARE(driver.Notice("successWindow")->property("heading").toString(), "Note");
    driver.Key(Qt::Key_Return);
    driver.ShowPage(kNetworkPage);
    QVERIFY(edited());
    driver.Click("cancelButton_2");
    EVENTUALLY_COMPARE(driver.Text("field_" + place), "2368");
    QVERIFY(!edited());
    QCOMPARE(driver.Text("editCount_2"), "No changes");

    driver.Enter("field_" + place, "80x");
    QCOMPARE(driver.Property("row_" + place, "verdict"), "is not a number");
    driver.Click("saveButton_2");
    QVERIFY(
        driver.Dismiss("errorWindow", "Destination Port can't be \"80x\". It has to be a number from 1024"));
    driver.Enter("field_" + place, "80");  // the table says 1024 to 65535
    driver.Click("saveButton_2");
    QVERIFY(driver.Dismiss("messageWindow",
                           "The Destination Port set by the user was detected to be outside the range "
                           "specified in the config file. Do you wish to continue?\n\n"
                           "Destination Port: 80, allowed 1024 to 65535",
                           Qt::Key_Escape));
    QCOMPARE(driver.Property("row_" + place, "verdict"), "is out of range");
    QVERIFY(driver.sensor.Received(kSetDestination).empty());
    driver.Click("saveButton_2");
    QVERIFY(driver.NoticeShows("messageWindow", "Destination Port"));
    driver.Click("noticeAcceptButton");
    QVERIFY(!driver.Property("saveButton_2", "enabled").toBool());  // while this save runs
    QVERIFY(driver.NoticeShows("successWindow", "Set Lidar Successfully"));
    QCOMPARE(driver.Notice("successWindow")->property("heading").toString(), "Saved");
    driver.Key(Qt::Key_Return);
    QCOMPARE(driver.sensor.ValueText("Destination Port"), "80");
    EVENTUALLY_VERIFY(!edited());
    QVERIFY(driver.Property("saveButton_2", "enabled").toBool());
    QCOMPARE(driver.Text("field_" + place), "80");
  }

  void RowsShowTheStateOfTheirValue() {
    WindowDriver driver;
    const auto strip = [&] { return driver.Text("staleStrip_2"); };
    driver.ShowPage(kNetworkPage);
    const QString row = "row_" + driver.Place(kNetworkPage, "Destination Port");
    const QString field = "field_" + driver.Place(kNetworkPage, "Destination Port");
    const auto note = [&] { return driver.Property(row, "note").toString(); };
    QCOMPARE(strip(), "Not connected. Values are the table's defaults");
    QVERIFY(driver.Property(row, "dimmed").toBool());
    QVERIFY(driver.Connect());
    driver.ShowPage(kNetworkPage);
    QVERIFY(!driver.Has("staleStrip_2") && !driver.Property(row, "dimmed").toBool());

    driver.Enter(field, "2400");
    QCOMPARE(note(), "was 2368");
    driver.sensor.AddFault("0x20=error:5");
    driver.Click("saveButton_2");
    QVERIFY(driver.NoticeShows("errorWindow", "SET [0x20] FAILED"));
    driver.Key(Qt::Key_Return);
    QVERIFY(driver.Dismiss("errorWindow", "Set Failed"));
    QCOMPARE(note(), "refused, code 5");
    driver.sensor.ClearFaults();
    driver.sensor.AddFault("0x20=clamp:1200");
    driver.Click("saveButton_2");
    QVERIFY(driver.Dismiss("successWindow", "0 of 1 verified, Destination Port holds 1200 instead of 2400"));
    QCOMPARE(note(), "sent 2400, sensor holds 1200");
    QVERIFY(driver.Text("statusOutcome").contains("holds 1200"));
    driver.sensor.ClearFaults();
    driver.Enter(field, "2401");
    driver.Click("saveButton_2");
    QVERIFY(driver.Dismiss("successWindow", "1 of 1 verified"));
    QCOMPARE(driver.Property(row, "values").value<QObject*>()->property("origin"), "verified");

    driver.sensor.AddFault("0x20=clamp:1200");
    driver.Enter(field, "2402");
    driver.Click("saveButton_2");
    QVERIFY(driver.Dismiss("successWindow", "holds 1200 instead of 2402"));
    driver.manager->Stop();
    EVENTUALLY_VERIFY(strip().startsWith("Not connected. Values last read "));
    QVERIFY(driver.Property(row, "dimmed").toBool());
    QCOMPARE(note(), "");
  }

  void EditsAreListedUndoneAndAskedAbout() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.ShowPage(kNetworkPage);
    const QString field = "field_" + driver.Place(kNetworkPage, "Destination Port");
    driver.Enter(field, "2400");
    driver.Key(Qt::Key_Z, Qt::ControlModifier);  // in the field, after Enter
    QCOMPARE(driver.Text(field), "2368");
    driver.ShowPage(kScanPage);
    driver.Key(Qt::Key_Z, Qt::ShiftModifier | Qt::ControlModifier);
    EVENTUALLY_VERIFY(driver.Has(field) && driver.Find(field)->hasActiveFocus());  // the page of the edit
    QCOMPARE(driver.Text(field), "2400");
    driver.ShowPage(kScanPage);
    driver.Choose("field_" + driver.Place(kScanPage, "Spin Direction"), 1);
    for (const char* tab : {"tab_2", "tab_4"}) QCOMPARE(driver.Property(tab, "edits").toInt(), 1);

    driver.Click("connectButton");
    QVERIFY(
        driver.Dismiss("messageWindow", "Destination Port: 2368 → 2400"));  // Enter takes the harmless choice
    QVERIFY(driver.manager->IsConnected());
    driver.Click("editsButton");
    driver.Click("takeBack_1");
    EVENTUALLY_COMPARE(driver.Property("tab_4", "edits").toInt(), 0);
    QCOMPARE(driver.Text("editTexts_0"), "2368 → 2400");
    driver.Key(Qt::Key_Escape);
    emit driver.manager->connectionCheckFinished(false);  // this disconnects without asking
    EVENTUALLY_VERIFY(!driver.manager->IsConnected());
    QCOMPARE(driver.Property("tab_2", "edits").toInt(), 0);

    driver.ShowPage(kNetworkPage);
    driver.Enter(field, "2400");
    driver.Find("modelCombo")->forceActiveFocus(Qt::TabFocusReason);
    driver.Key(Qt::Key_Down);
    QVERIFY(driver.NoticeShows("messageWindow", "Changing the model discards the unsaved changes"));
    QCOMPARE(driver.Property("modelCombo", "currentText"), "Quenta");
    driver.Click("noticeAcceptButton");
    EVENTUALLY_COMPARE(driver.Property("modelCombo", "currentText"), "Zelto");
    QCOMPARE(driver.manager->getSetMapSize(), 0);
  }

  void SaveAsksBeforeItWritesWhatWasNeverRead() {
    const QString question =
        "Saving also writes fields that have never been read from this sensor, with the "
        "values shown here: Destination IP. Do you wish to continue?";
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.sensor.AddFault("0x08=error");
    driver.ShowPage(kNetworkPage);
    driver.Enter("field_" + driver.Place(kNetworkPage, "Destination Port"), "2400");
    driver.Click("saveButton_2");
    QVERIFY(driver.Dismiss("messageWindow", question));  // Enter takes the harmless choice
    QVERIFY(driver.sensor.Received(kSetDestination).empty());
    driver.Click("saveButton_2");
    QVERIFY(driver.NoticeShows("messageWindow", question));
    driver.Click("noticeAcceptButton");
    QVERIFY(driver.Dismiss("successWindow", "Set Lidar Successfully"));
  }

  void ComboAndSwitch() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.ShowPage(kScanPage);
    const QString direction = driver.Place(kScanPage, "Spin Direction");
    const QString angle = driver.Place(kScanPage, "Sync Angle (deg)");
    driver.Choose("field_" + direction, 1);
    QVERIFY(driver.Property("row_" + direction, "edited").toBool());
    driver.Click("switch_" + angle);
    QVERIFY(!driver.Property("switch_" + angle, "checked").toBool());
    QVERIFY(!driver.Find("field_" + angle)->isEnabled());
    QCOMPARE(driver.Text("field_" + angle), "0");
    driver.Click("saveButton_4");
    QVERIFY(driver.NoticeShows("successWindow", "Set Lidar Successfully"));
    QCOMPARE(driver.sensor.ValueText("Spin Direction"), "1");
    QCOMPARE(driver.sensor.ValueText("Sync Angle"), "0");
  }

  void AnotherModelRemovesThePageAtOnce() {
    WindowDriver driver;
    QVERIFY(driver.Connect());
    driver.ShowPage(kScanPage);
    driver.manager->Stop();
    for (const char* model : {"Zelto-KTC", "Quenta"}) {
      QMetaObject::invokeMethod(driver.root, "changeModel", Q_ARG(QVariant, model));
    }
    driver.ShowPage(kScanPage);  // a call into a row that is gone would be a warning, which fails the program
  }

  void FieldOfViewBoxes() {
    WindowDriver driver;
    driver.ShowPage(kFovPage);
    const QString box = "fov_" + driver.Place(kFovPage, "Channel Field of View") + "_";
    QCOMPARE(driver.Text(box + "0"), "0.0");
    QCOMPARE(driver.Text(box + "9"), "360.0");
    driver.Enter(box + "1", "42.5");
    driver.Enter(box + "6", "90");
    QCOMPARE(driver.Text(box + "6"), "90.0");
    QCOMPARE(driver.manager->FovList().value(1), "42.5");
    driver.Enter(box + "1", "361");
    QVERIFY(driver.NoticeShows("errorWindow", "Input value of fov is invalid"));
    QCOMPARE(driver.Text(box + "1"), "42.5");
  }

  void UpgradeTakesPatchFilesAndForbidsDisconnecting() {
    WindowDriver driver;
    driver.ShowPage(kUpgradePage);
    driver.Drop("new one.patch", "x");
    QVERIFY(driver.Dismiss("errorWindow", "Connect to the sensor first"));
    QVERIFY(driver.Connect());
    driver.Drop("firmware.patch.bin");
    QVERIFY(driver.Dismiss("errorWindow", "Upgrade package rejected: it has to be a .patch file"));
    QCOMPARE(driver.Text("upgradeFileName") + driver.Text("upgradeProgress"), "0.00%");
    const QByteArray package = "VARKEL-SIM FIRMWARE 4.1.2.9 2027-03-04\n" + QByteArray(20000, 'x');
    driver.Drop("new one.patch", package);
    QVERIFY(driver.NoticeShows("messageWindow",
                               "Package: new one.patch\nSize: 20,039 bytes\nFirmware Version: 3."));
    QCOMPARE(driver.Notice("messageWindow")->property("message").toString().count("Firmware Version"), 1);
    driver.Key(Qt::Key_Return);
    QVERIFY(!driver.manager->IsUpgrading());
    driver.Drop("new one.patch", package);
    driver.Click("noticeAcceptButton");
    EVENTUALLY_VERIFY(driver.manager->IsUpgrading());
    QCOMPARE(driver.Text("upgradeFileName"), "new one.patch");
    QVERIFY(!driver.Find("attachButton")->isEnabled());
    driver.Click("connectButton");
    QVERIFY(driver.Dismiss("errorWindow", "Disconnect REJECTED. Lidar is upgrading."));
    QVERIFY(driver.NoticeShows("successWindow", "Upgrade package transmitted successfully."));
    EVENTUALLY_COMPARE(driver.Text("upgradeProgress"), "100.00%");
    QCOMPARE(driver.Property("upgradeProgress", "fillColor").value<QColor>(), QColor("green"));
  }
};
const RegisterTest<PageTest> register_page_test;

}  // namespace

#include "page_test.moc"
