#include "tests/support/silent_address.h"
#include "tests/ui/ui_test.h"

namespace {

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void ButtonConnectsAndDisconnects() {
    Desk desk;
    const auto light = [&desk] { return desk.Property("connectionLight", "color").value<QColor>(); };
    QCOMPARE(desk.Text("connectButton"), "Connect");
    desk.sensor.SetValue("SN", "QU-first-light");
    QVERIFY(desk.Connect());
    const QString serial_number = "field_" + desk.Place(0, "SN");
    QTRY_COMPARE(desk.Text(serial_number), "QU-first-light");
    QCOMPARE(light(), QColor("#00FF6B"));
    QCOMPARE(desk.Text("connectButton"), "Disconnect");
    QVERIFY(!desk.Find("modelCombo")->isEnabled());
    QVERIFY(!desk.IsOpen("errorWindow"));
    desk.manager->setIsDownloadLog(true);
    QTRY_VERIFY(!desk.Find("connectButton")->isEnabled());
    desk.manager->setIsDownloadLog(false);
    desk.Press("connectButton");
    QTRY_VERIFY(!desk.manager->IsConnected());
    QTRY_COMPARE(desk.Text(serial_number), "xxxxxxxx");
    QCOMPARE(light(), QColor("red"));
    QVERIFY(desk.Find("modelCombo")->isEnabled());
  }

  void RefusedPort() {
    Desk desk;
    const std::uint16_t port = desk.sensor.port();
    desk.sensor.Stop();
    desk.Dial(port);
    QVERIFY(desk.NoticeShows("errorWindow", "Connection Failed. Please check your network settings."));
    QVERIFY(desk.Dismiss("errorWindow"));
    QCOMPARE(desk.manager->errorMessage(), "");
    QTRY_VERIFY(!desk.Has("loadingBar"));
  }

  void ImpatientUser() {
    const quarn::test::SilentAddress silent;
    Desk desk;
    desk.Dial(silent.port());
    QTRY_VERIFY(desk.manager->GetIsConnectingLidar());
    desk.Click("connectButton");
    QVERIFY(desk.NoticeShows("errorWindow", "Is Connecting Lidar... Please wait."));
  }

  void WrongModelIsReported_data() {
    const Table<QString, QString, QString> row("pn", "sn", "warning");
    row("name in the part number", "X-Quenta-1", "123", "");
    row("two letters in the serial number", "123", "Qu7", "");
    row("neither", "A", "QU123", "a mismatch is detected between the lidar model");
    row("one empty", "", "Qu7", "There is a problem with the PN or SN code");
    row("both empty", "", "", "Empty PN or SN code detected.");
  }
  void WrongModelIsReported() {
    QFETCH(QString, pn);
    QFETCH(QString, sn);
    QFETCH(QString, warning);
    Desk desk;
    desk.sensor.SetValue("PN", pn.toStdString());
    desk.sensor.SetValue("SN", sn.toStdString());
    QVERIFY(desk.Connect());
    if (!warning.isEmpty()) {
      QVERIFY(desk.NoticeShows("errorWindow", warning));
    } else {
      QTRY_COMPARE(desk.Text("field_" + desk.Place(0, "SN")), sn);
      QVERIFY(!desk.IsOpen("errorWindow"));
    }
  }

  void ModelChangeBringsItsFieldsAndPages() {
    Desk desk;
    const auto choose = [&desk](const QString& model) {
      desk.Choose("modelCombo", desk.Property("modelCombo", "model").toStringList().indexOf(model));
    };
    desk.ShowPage(2);
    choose("Zelto");
    QTRY_VERIFY(desk.Has("zeltoPage") && desk.Has("rs485Field") && desk.Has("uartField"));
    for (const char* name : {"ipField", "restartButton", "page_2", "tab_0"}) QVERIFY2(!desk.Has(name), name);
    choose("Zelto-KTC");
    QTRY_VERIFY(desk.Has("ipField") && desk.Has("rs485Field"));
    QCOMPARE(desk.Property("zeltoPage", "selectedModel"), "Zelto-KTC");
    choose("Quenta");
    QTRY_VERIFY(desk.Has("page_0"));
    QVERIFY(!desk.Has("zeltoPage") && desk.Has("restartButton"));
    desk.Type("udpPortField", "70000");
    desk.Key(Qt::Key_Tab);
    QTRY_COMPARE(desk.Text("udpPortField"), "4464");  // what is kept of it
  }

  void StartModelIsFixed() {
    const Desk desk({}, "Zelto-KTC");
    QVERIFY(desk.Has("zeltoPage"));
    QVERIFY(!desk.Find("modelCombo")->isEnabled());
    QCOMPARE(desk.Property("modelCombo", "displayText"), "Zelto-KTC");
    const Desk unknown({}, "Nobody");
    QVERIFY(unknown.Find("modelCombo")->isEnabled());
    QCOMPARE(unknown.Property("modelCombo", "displayText"), "Quenta");
  }
};
const RegisterTest<ConnectionTest> registration;

}  // namespace

#include "connection_test.moc"
