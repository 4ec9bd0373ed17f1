#include "tests/support/silent_address.h"
#include "tests/ui/ui_test.h"

namespace {

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void EnterConnectsAndShowsTheFirstPage();
  void DisconnectTakesTheSerialNumberBack();
  void RefusedPort();
  void LostSensorIsLetGo();
  void ImpatientUser();
  void DownloadForbidsDisconnecting();
  void WrongModelIsReported_data();
  void WrongModelIsReported();
  void ModelChangeBringsItsFieldsAndPages();
  void StartModelIsFixed();
  void UdpPortShowsWhatIsKept();
};
const RegisterTest<ConnectionTest> registration;

void ConnectionTest::EnterConnectsAndShowsTheFirstPage() {
  Desk desk;
  QCOMPARE(desk.Text("connectButton"), "Connect");
  QVERIFY(!desk.Find("connectionLight")->property("connected").toBool());
  desk.sensor.SetValue("SN", "QU-first-light");
  QVERIFY(desk.Connect());
  QTRY_COMPARE(desk.Text("field_" + desk.Place(0, "SN")), "QU-first-light");
  QVERIFY(desk.Find("connectionLight")->property("connected").toBool());
  QCOMPARE(desk.Find("connectionLight")->property("color").value<QColor>(), QColor("#00FF6B"));
  QCOMPARE(desk.Text("connectButton"), "Disconnect");
  QVERIFY(!desk.Find("modelCombo")->isEnabled());
  QVERIFY(!desk.Notice("errorWindow")->property("visible").toBool());
}

void ConnectionTest::DisconnectTakesTheSerialNumberBack() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.Click("connectButton");
  QTRY_VERIFY(!desk.manager->IsConnected());
  QTRY_COMPARE(desk.Text("field_" + desk.Place(0, "SN")), "xxxxxxxx");
  QCOMPARE(desk.Find("connectionLight")->property("color").value<QColor>(), QColor("red"));
  QVERIFY(desk.Find("modelCombo")->isEnabled());
}

void ConnectionTest::RefusedPort() {
  Desk desk;
  const std::uint16_t port = desk.sensor.port();
  desk.sensor.Stop();
  desk.Dial(port);
  QVERIFY(desk.NoticeShows("errorWindow", "Connection Failed. Please check your network settings."));
  desk.Key(Qt::Key_Return);
  QTRY_VERIFY(!desk.Notice("errorWindow")->property("visible").toBool());
  QCOMPARE(desk.manager->errorMessage(), "");
  QTRY_VERIFY(!desk.Has("loadingBar"));
}

void ConnectionTest::LostSensorIsLetGo() {
  Desk desk;
  QVERIFY(desk.Connect());
  emit desk.manager->connectionCheckFinished(true);
  QVERIFY(desk.manager->IsConnected());
  emit desk.manager->connectionCheckFinished(false);
  QTRY_VERIFY(!desk.manager->IsConnected());
}

void ConnectionTest::ImpatientUser() {
  const quarn::test::SilentAddress silent;
  Desk desk;
  desk.Dial(silent.port());
  QTRY_VERIFY(desk.manager->GetIsConnectingLidar());
  desk.Click("connectButton");
  QVERIFY(desk.NoticeShows("errorWindow", "Is Connecting Lidar... Please wait."));
}

void ConnectionTest::DownloadForbidsDisconnecting() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.manager->setIsDownloadLog(true);
  QTRY_VERIFY(!desk.Find("connectButton")->isEnabled());
  desk.manager->setIsDownloadLog(false);
  QTRY_VERIFY(desk.Find("connectButton")->isEnabled());
}

void ConnectionTest::WrongModelIsReported_data() {
  QTest::addColumn<QString>("pn");
  QTest::addColumn<QString>("sn");
  QTest::addColumn<QString>("warning");
  QTest::newRow("name in the part number") << "X-Quenta-1"
                                           << "123"
                                           << "";
  QTest::newRow("two letters in the serial number") << "123"
                                                    << "Qu7"
                                                    << "";
  QTest::newRow("neither") << "A"
                           << "QU123"
                           << "a mismatch is detected between the lidar model";
  QTest::newRow("one empty") << ""
                             << "Qu7"
                             << "There is a problem with the PN or SN code";
  QTest::newRow("both empty") << ""
                              << ""
                              << "Empty PN or SN code detected.";
}

void ConnectionTest::WrongModelIsReported() {
  QFETCH(QString, pn);
  QFETCH(QString, sn);
  QFETCH(QString, warning);
  Desk desk;
  desk.sensor.SetValue("PN", pn.toStdString());
  desk.sensor.SetValue("SN", sn.toStdString());
  QVERIFY(desk.Connect());
  if (warning.isEmpty()) {
    QTRY_COMPARE(desk.Text("field_" + desk.Place(0, "SN")), sn);
    QVERIFY(!desk.Notice("errorWindow")->property("visible").toBool());
  } else {
    QVERIFY(desk.NoticeShows("errorWindow", warning));
  }
}

void ConnectionTest::ModelChangeBringsItsFieldsAndPages() {
  Desk desk;
  const auto choose = [&desk](const QString& model) {
    QQuickItem* combo = desk.Find("modelCombo");
    combo->forceActiveFocus(Qt::TabFocusReason);
    const int target = combo->property("model").toStringList().indexOf(model);
    for (int at = combo->property("currentIndex").toInt(); at != target; at += at < target ? 1 : -1) {
      desk.Key(at < target ? Qt::Key_Down : Qt::Key_Up);
    }
  };
  desk.ShowPage(2);
  QVERIFY(desk.Has("page_2"));
  choose("Zelto");
  QTRY_VERIFY(desk.Has("zeltoPage"));
  QVERIFY(desk.Has("rs485Field") && desk.Has("uartField") && !desk.Has("ipField") &&
          !desk.Has("restartButton"));
  QVERIFY(!desk.Has("page_2") && !desk.Has("tab_0"));
  choose("Zelto-KTC");
  QTRY_VERIFY(desk.Has("ipField") && desk.Has("rs485Field"));
  QCOMPARE(desk.Find("zeltoPage")->property("selectedModel"), "Zelto-KTC");
  choose("Quenta");
  QTRY_VERIFY(desk.Has("page_0"));
  QVERIFY(!desk.Has("zeltoPage") && desk.Has("restartButton"));
}

void ConnectionTest::StartModelIsFixed() {
  Desk desk({}, "Zelto-KTC");
  QVERIFY(desk.Has("zeltoPage"));
  QVERIFY(!desk.Find("modelCombo")->isEnabled());
  QCOMPARE(desk.Find("modelCombo")->property("displayText"), "Zelto-KTC");
  const Desk unknown({}, "Nobody");
  QVERIFY(unknown.Find("modelCombo")->isEnabled());
  QCOMPARE(unknown.Find("modelCombo")->property("displayText"), "Quenta");
}

void ConnectionTest::UdpPortShowsWhatIsKept() {
  Desk desk;
  desk.Type("udpPortField", "70000");
  desk.Key(Qt::Key_Tab);
  QTRY_COMPARE(desk.Text("udpPortField"), "4464");
}

}  // namespace

#include "connection_test.moc"
