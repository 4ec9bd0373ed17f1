#include "tests/support/silent_address.h"
#include "tests/ui/desk.h"

namespace {

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void ButtonConnectsAndDisconnects() {
    Desk desk;
    const auto light = [&desk] { return desk.Property("connectionLight", "color").value<QColor>(); };
    QCOMPARE(desk.Text("connectButton"), "Connect");
    QVERIFY(desk.Connect());
    const QString serial_number = "field_" + desk.Place(0, "SN");
    EVENTUALLY_COMPARE(desk.Text(serial_number), QString::fromStdString(desk.sensor.ValueText("SN")));
    QCOMPARE(light(), QColor("#00FF6B"));
    QCOMPARE(desk.Text("connectButton"), "Disconnect");
    QVERIFY(!desk.Find("modelCombo")->isEnabled());
    QVERIFY(desk.Property("ipField", "readOnly").toBool());
    EVENTUALLY_COMPARE(desk.Text("statusConnection"), QString("Connected to 127.0.0.1:%1, Quenta, SN %2")
                                                          .arg(desk.sensor.port())
                                                          .arg(desk.Text(serial_number)));
    desk.manager->setIsDownloadLog(true);
    EVENTUALLY_VERIFY(!desk.Find("connectButton")->isEnabled());
    desk.manager->setIsDownloadLog(false);
    desk.Press("connectButton");
    EVENTUALLY_VERIFY(!desk.manager->IsConnected());
    EVENTUALLY_COMPARE(desk.Text(serial_number), "xxxxxxxx");
    QCOMPARE(light(), QColor("red"));
    QVERIFY(desk.Find("modelCombo")->isEnabled());
  }

  void RefusedPortAndImpatientUser() {
    const quarn::test::SilentAddress silent;
    Desk desk;
    const std::uint16_t port = desk.sensor.port();
    desk.sensor.Stop();
    desk.Dial(port);
    QVERIFY(desk.Dismiss("errorWindow", "Connection Failed. Please check your network settings."));
    QCOMPARE(desk.Text("statusOutcome"), "Connection Failed. Please check your network settings.");
    QCOMPARE(desk.manager->errorMessage(), "");
    EVENTUALLY_VERIFY(!desk.Has("loadingBar"));
    desk.Dial(silent.port());
    EVENTUALLY_VERIFY(desk.manager->GetIsConnectingLidar());
    desk.Click("connectButton");
    QVERIFY(desk.NoticeShows("errorWindow", "Is Connecting Lidar... Please wait."));
  }

  void WrongModelIsReported() {
    const struct {
      const char *part_number, *serial_number, *warning;
    } cases[] = {{"X-Quenta-1", "123", nullptr},
                 {"123", "Qu7", nullptr},
                 {"A", "QU123", "a mismatch is detected between the lidar model"},
                 {"", "Qu7", "There is a problem with the PN or SN code"},
                 {"", "", "Empty PN or SN code detected."}};
    Desk desk;
    for (const auto& [part_number, serial_number, warning] : cases) {
      desk.sensor.SetValue("PN", part_number);
      desk.sensor.SetValue("SN", serial_number);
      QVERIFY(desk.Connect());
      QVERIFY2(warning == nullptr || desk.Dismiss("errorWindow", warning), warning);
      QVERIFY(!desk.IsOpen("errorWindow"));
      desk.Press("connectButton");
      EVENTUALLY_VERIFY(!desk.manager->IsConnected());
    }
  }

  void ModelChangeBringsItsFieldsAndPages() {
    const struct {
      const char* model;
      QStringList shown, hidden;
    } cases[] = {{"Zelto",
                  {"zeltoPage", "rs485Field", "uartField", "baudRateCombo"},
                  {"ipField", "restartButton", "tab_0"}},
                 {"Zelto-KTC",
                  {"zeltoPage", "ipField", "portField", "udpPortField", "baudRateCombo"},
                  {"rs485Field", "uartField", "restartButton", "tab_0"}},
                 {"Quenta", {"page_0", "restartButton", "ipField"}, {"zeltoPage", "rs485Field"}}};
    Desk desk;
    desk.ShowPage(2);
    for (const auto& [model, shown, hidden] : cases) {
      desk.Choose("modelCombo", desk.Property("modelCombo", "model").toStringList().indexOf(model));
      for (const QString& name : shown) EVENTUALLY_VERIFY2(desk.Has(name), qPrintable(name));
      for (const QString& name : hidden) QVERIFY2(!desk.Has(name), qPrintable(name));
    }
    desk.Type("udpPortField", "70000");
    desk.Key(Qt::Key_Tab);
    EVENTUALLY_COMPARE(desk.Text("udpPortField"), "4464");  // what is kept of it
  }

  void RecentAddressesAreOfferedAndDoNotDisturbTyping() {
    Desk desk;
    QObject* const recent = desk.manager->recentAddresses();
    const auto keep = [&](const QStringList& wanted) {
      for (const QString& old : recent->property("all").toStringList()) {
        QMetaObject::invokeMethod(recent, "remove", Q_ARG(QString, old));
      }
      for (const QString& address : wanted) QMetaObject::invokeMethod(recent, "add", Q_ARG(QString, address));
    };
    keep({});
    QVERIFY(desk.Connect());
    EVENTUALLY_COMPARE(recent->property("all").toStringList(), QStringList("127.0.0.1"));
    desk.Press("connectButton");
    EVENTUALLY_VERIFY(!desk.manager->IsConnected());
    keep({"10.0.0.3", "10.0.0.2", "10.0.0.1"});
    desk.Type("ipField", "9");
    desk.Key(Qt::Key_Down);
    QVERIFY(desk.Has("recentAddress_2"));
    QTest::keyClick(&desk.view(), '8');  // goes on as if nothing were open
    EVENTUALLY_VERIFY(!desk.Has("recentAddress_0"));
    QCOMPARE(desk.Text("ipField"), "98");
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Delete, Qt::Key_Down, Qt::Key_Return}) desk.Key(key);
    QCOMPARE(desk.manager->ip_address(), "10.0.0.3");
    desk.Click("recentAddressesButton");
    desk.Click("recentAddress_0");
    QCOMPARE(desk.manager->ip_address(), "10.0.0.2");
    QVERIFY(!desk.manager->GetIsConnectingLidar());
    keep({});
    QVERIFY(!desk.Has("recentAddressesButton"));
  }

  void StartModelIsTheOnlyOneOrUnknown() {
    for (const char* start_model : {"Zelto-KTC", "Nobody"}) {
      const Desk desk(start_model);
      const bool known = QString(start_model) != "Nobody";
      QCOMPARE(desk.Find("modelCombo")->isEnabled(), !known);  // the only one
      QCOMPARE(desk.Property("modelCombo", "displayText"), known ? start_model : "Quenta");
    }
  }
};
const RegisterTest<ConnectionTest> register_connection_test;

}  // namespace

#include "connection_test.moc"
