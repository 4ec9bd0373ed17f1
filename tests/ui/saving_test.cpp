#include <QFile>
#include <QTemporaryDir>

#include "tests/ui/ui_test.h"

namespace {

constexpr int kNetworkPage = 2;
constexpr int kScanPage = 4;
constexpr int kFovPage = 5;
constexpr int kUpgradePage = 6;
constexpr std::uint8_t kSetDestination = 0x20;

class SavingTest : public QObject {
  Q_OBJECT
 private slots:
  void EditIsMarkedSavedAndUnmarked();
  void NothingToSave();
  void OutOfRangeAsksFirst();
  void CancelTakesEditsBack();
  void ComboAndSwitch();
  void FieldOfViewBoxes();
  void OnlyPatchFilesAreUpgrades();
  void UpgradeShowsItsProgressAndForbidsDisconnecting();
};
const RegisterTest<SavingTest> registration;

void SavingTest::EditIsMarkedSavedAndUnmarked() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.ShowPage(kNetworkPage);
  const QString place = desk.Place(kNetworkPage, "Destination Port");
  const QQuickItem* const row = desk.Find("row_" + place);
  desk.Enter("field_" + place, desk.Text("field_" + place));
  QVERIFY(!row->property("edited").toBool());
  desk.Enter("field_" + place, "2400");
  QVERIFY(row->property("edited").toBool());
  QCOMPARE(desk.Text("editCount_2"), "1 change not saved yet");
  desk.Click("saveButton_2");
  QVERIFY(desk.NoticeShows("successWindow", "Set Lidar Successfully"));
  QCOMPARE(desk.sensor.ValueText("Destination Port"), "2400");
  desk.Key(Qt::Key_Return);
  QTRY_VERIFY(!desk.Notice("successWindow")->property("visible").toBool());
  QTRY_VERIFY(!row->property("edited").toBool());
  QCOMPARE(desk.Text("field_" + place), "2400");
}

void SavingTest::NothingToSave() {
  Desk desk;
  desk.Click("saveButton_0");
  QVERIFY(desk.NoticeShows("successWindow", "Please connect to lidar first"));
  desk.Key(Qt::Key_Escape);
  QTRY_VERIFY(!desk.Notice("successWindow")->property("visible").toBool());
  QVERIFY(desk.Connect());
  desk.Click("saveButton_0");
  QVERIFY(desk.NoticeShows("successWindow", "Nothing to be saved"));
}

void SavingTest::OutOfRangeAsksFirst() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.ShowPage(kNetworkPage);
  const QString place = desk.Place(kNetworkPage, "Destination Port");
  desk.Enter("field_" + place, "80");  // the table says 1024 to 65535
  desk.Click("saveButton_2");
  QVERIFY(desk.NoticeShows(
      "messageWindow",
      "The Destination Port set by the user was detected to be outside the range specified in the "
      "config file. Do you wish to continue?"));
  QVERIFY(desk.Find("row_" + place)->property("outOfRange").toBool());
  desk.Key(Qt::Key_Escape);
  QTRY_VERIFY(!desk.Notice("messageWindow")->property("visible").toBool());
  QVERIFY(desk.sensor.Received(kSetDestination).empty());
  desk.Click("saveButton_2");
  QVERIFY(desk.NoticeShows("messageWindow", "Destination Port"));
  desk.Click("noticeAcceptButton");
  QVERIFY(desk.NoticeShows("successWindow", "Set Lidar Successfully"));
  QCOMPARE(desk.sensor.ValueText("Destination Port"), "80");
}

void SavingTest::CancelTakesEditsBack() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.ShowPage(kNetworkPage);
  const QString place = desk.Place(kNetworkPage, "Destination Port");
  desk.Enter("field_" + place, "2400");
  desk.Click("cancelButton_2");
  QTRY_COMPARE(desk.Text("field_" + place), "2368");
  QVERIFY(!desk.Find("row_" + place)->property("edited").toBool());
  QCOMPARE(desk.manager->getSetMapSize(), 0);
  QCOMPARE(desk.Text("editCount_2"), "No changes");
}

void SavingTest::ComboAndSwitch() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.ShowPage(kScanPage);
  const QString direction = desk.Place(kScanPage, "Spin Direction");
  desk.Find("field_" + direction)->forceActiveFocus(Qt::TabFocusReason);
  desk.Key(Qt::Key_Down);
  QVERIFY(desk.Find("row_" + direction)->property("edited").toBool());
  const QString angle = desk.Place(kScanPage, "Sync Angle (deg)");
  desk.Click("switch_" + angle);
  QVERIFY(!desk.Find("switch_" + angle)->property("checked").toBool());
  QVERIFY(!desk.Find("field_" + angle)->isEnabled());
  QCOMPARE(desk.Text("field_" + angle), "0");
  desk.Click("saveButton_4");
  QVERIFY(desk.NoticeShows("successWindow", "Set Lidar Successfully"));
  QCOMPARE(desk.sensor.ValueText("Spin Direction"), "1");
  QCOMPARE(desk.sensor.ValueText("Sync Angle"), "0");
}

void SavingTest::FieldOfViewBoxes() {
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

void SavingTest::OnlyPatchFilesAreUpgrades() {
  Desk desk;
  desk.ShowPage(kUpgradePage);
  QQuickItem* const drop = desk.Find("upgradeDrop");
  QMetaObject::invokeMethod(drop, "dropped", Q_ARG(QUrl, QUrl("file:///tmp/firmware.patch.bin")));
  QVERIFY(desk.NoticeShows("errorWindow", "Upgrade package rejected: it has to be a .patch file"));
  QCOMPARE(desk.Text("upgradeFileName"), "");
  QCOMPARE(desk.Text("upgradeProgress"), "0.00%");
}

void SavingTest::UpgradeShowsItsProgressAndForbidsDisconnecting() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.ShowPage(kUpgradePage);
  const QTemporaryDir folder;
  QFile package(folder.filePath("new one.patch"));
  QVERIFY(package.open(QIODevice::WriteOnly));
  package.write("VARKEL-SIM FIRMWARE 4.1.2.9 2027-03-04\n" + QByteArray(20000, 'x'));
  package.close();
  QMetaObject::invokeMethod(desk.Find("upgradeDrop"), "dropped",
                            Q_ARG(QUrl, QUrl::fromLocalFile(package.fileName())));
  QTRY_VERIFY(desk.manager->IsUpgrading());
  QCOMPARE(desk.Text("upgradeFileName"), "new one.patch");
  QVERIFY(!desk.Find("attachButton")->isEnabled());
  desk.Click("connectButton");
  QVERIFY(desk.NoticeShows("errorWindow", "Disconnect REJECTED. Lidar is upgrading."));
  desk.Key(Qt::Key_Escape);
  QVERIFY(desk.NoticeShows("successWindow", "Upgrade package transmitted successfully."));
  QTRY_COMPARE(desk.Text("upgradeProgress"), "100.00%");
  QCOMPARE(desk.Find("upgradeProgress")->property("fillColor").value<QColor>(), QColor("green"));
}

}  // namespace

#include "saving_test.moc"
