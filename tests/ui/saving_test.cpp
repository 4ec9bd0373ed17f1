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
    desk.Click("cancelButton_2");
    QTRY_COMPARE(desk.Text("field_" + place), "2368");
    QVERIFY(!edited());
    QCOMPARE(desk.Text("editCount_2"), "No changes");

    desk.Enter("field_" + place, "80");  // the table says 1024 to 65535
    desk.Click("saveButton_2");
    QVERIFY(desk.Dismiss("messageWindow",
                         "The Destination Port set by the user was detected to be outside the range "
                         "specified in the config file. Do you wish to continue?",
                         Qt::Key_Escape));
    QVERIFY(desk.Property("row_" + place, "outOfRange").toBool());
    QVERIFY(desk.sensor.Received(kSetDestination).empty());
    desk.Click("saveButton_2");
    QVERIFY(desk.NoticeShows("messageWindow", "Destination Port"));
    desk.Click("noticeAcceptButton");
    QVERIFY(desk.Dismiss("successWindow", "Set Lidar Successfully"));
    QCOMPARE(desk.sensor.ValueText("Destination Port"), "80");
    QTRY_VERIFY(!edited());
    QCOMPARE(desk.Text("field_" + place), "80");
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
    QVERIFY(desk.Connect());
    desk.ShowPage(kUpgradePage);
    desk.Drop(QUrl("file:///tmp/firmware.patch.bin"));
    QVERIFY(desk.Dismiss("errorWindow", "Upgrade package rejected: it has to be a .patch file"));
    QCOMPARE(desk.Text("upgradeFileName") + desk.Text("upgradeProgress"), "0.00%");
    const QTemporaryDir folder;
    QFile package(folder.filePath("new one.patch"));
    QVERIFY(package.open(QIODevice::WriteOnly));
    package.write("VARKEL-SIM FIRMWARE 4.1.2.9 2027-03-04\n" + QByteArray(20000, 'x'));
    package.close();
    desk.Drop(QUrl::fromLocalFile(package.fileName()));
    QTRY_VERIFY(desk.manager->IsUpgrading());
    QCOMPARE(desk.Text("upgradeFileName"), "new one.patch");
    QVERIFY(!desk.Find("attachButton")->isEnabled());
    desk.Click("connectButton");
    QVERIFY(desk.Dismiss("errorWindow", "Disconnect REJECTED. Lidar is upgrading."));
    QVERIFY(desk.NoticeShows("successWindow", "Upgrade package transmitted successfully."));
    QTRY_COMPARE(desk.Text("upgradeProgress"), "100.00%");
    QCOMPARE(desk.Property("upgradeProgress", "fillColor").value<QColor>(), QColor("green"));
  }
};
const RegisterTest<SavingTest> registration;

}  // namespace

#include "saving_test.moc"
