#include "tests/ui/window_driver.h"

namespace {

class ConnectionTest : public QObject {
  Q_OBJECT
 private slots:
  void ButtonConnectsAndDisconnects() {
    WindowDriver driver;
    const auto light = [&driver] { return driver.Property("connectionLight", "color").value<QColor>(); };
    QCOMPARE(driver.Text("connectButton"), "Connect");
    QVERIFY(driver.Connect());
    const QString serial_number = "field_" + driver.Place(0, "SN");
    EVENTUALLY_COMPARE(driver.Text(serial_number), QString::fromStdString(driver.sensor.ValueText("SN")));
    QCOMPARE(light(), QColor("#00FF6B"));
    QCOMPARE(driver.Text("connectButton"), "Disconnect");
    QVERIFY(!driver.Find("modelCombo")->isEnabled());
    QVERIFY(driver.Property("ipField", "readOnly").toBool());
    EVENTUALLY_COMPARE(driver.Text("statusConnection"), QString("Connected to 127.0.0.1:%1, Quenta, SN %2")
                                                            .arg(driver.sensor.port())
                                                            .arg(driver.Text(serial_number)));
    driver.manager->setIsDownloadLog(true);
    EVENTUALLY_VERIFY(!driver.Find("connectButton")->isEnabled());
    driver.manager->setIsDownloadLog(false);
    driver.Press("connectButton");
    EVENTUALLY_VERIFY(!driver.manager->IsConnected());
    EVENTUALLY_COMPARE(driver.Text(serial_number), "xxxxxxxx");
    QCOMPARE(light(), QColor("red"));
    QVERIFY(driver.Find("modelCombo")->isEnabled());
  }

  void ImpatientUserAndRefusedPort() {
    WindowDriver driver;
    const std::uint16_t port = driver.sensor.port();
    driver.sensor.AddFault("*=silence");  // the attempt waits for replies
    driver.Dial();
    EVENTUALLY_VERIFY(driver.manager->GetIsConnectingLidar());
    driver.Click("connectButton");
    QVERIFY(driver.Dismiss("errorWindow", "Is Connecting Lidar... Please wait."));
    driver.sensor.Stop();
    QVERIFY(driver.Dismiss("errorWindow", "Connection Failed. Please check your network settings."));
    EVENTUALLY_VERIFY(!driver.manager->GetIsConnectingLidar());
    driver.Dial(port);
    QVERIFY(driver.Dismiss("errorWindow", "Connection Failed. Please check your network settings."));
    QCOMPARE(driver.Text("statusOutcome"), "Connection Failed. Please check your network settings.");
    QCOMPARE(driver.manager->errorMessage(), "");
    EVENTUALLY_VERIFY(!driver.Has("loadingBar"));
  }

  void WrongModelIsReported() {
    const struct {
      const char *part_number, *serial_number, *warning;
    } cases[] = {{"X-Quenta-1", "123", nullptr},
                 {"123", "Qu7", nullptr},
                 {"A", "QU123", "a mismatch is detected between the lidar model"},
                 {"", "Qu7", "There is a problem with the PN or SN code"},
                 {"", "", "Empty PN or SN code detected."}};
    WindowDriver driver;
    for (const auto& [part_number, serial_number, warning] : cases) {
      driver.sensor.SetValue("PN", part_number);
      driver.sensor.SetValue("SN", serial_number);
      QVERIFY(driver.Connect());
      QVERIFY2(warning == nullptr || driver.Dismiss("errorWindow", warning), warning);
      QVERIFY(!driver.IsOpen("errorWindow"));
      driver.Press("connectButton");
      EVENTUALLY_VERIFY(!driver.manager->IsConnected());
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
    WindowDriver driver;
    driver.ShowPage(2);
    for (const auto& [model, shown, hidden] : cases) {
      driver.Choose("modelCombo", driver.Property("modelCombo", "model").toStringList().indexOf(model));
      for (const QString& name : shown) EVENTUALLY_VERIFY2(driver.Has(name), qPrintable(name));
      for (const QString& name : hidden) QVERIFY2(!driver.Has(name), qPrintable(name));
    }
    driver.Type("udpPortField", "70000");
    driver.Key(Qt::Key_Tab);
    EVENTUALLY_COMPARE(driver.Text("udpPortField"), "4464");  // the part of it that is kept
  }

  void RecentAddressesAreOfferedAndDoNotDisturbTyping() {
    WindowDriver driver;
    QObject* const recent = driver.manager->recentAddresses();
    const auto keep = [&](const QStringList& wanted) {
      for (const QString& old : recent->property("all").toStringList()) {
        QMetaObject::invokeMethod(recent, "remove", Q_ARG(QString, old));
      }
      for (const QString& address : wanted) QMetaObject::invokeMethod(recent, "add", Q_ARG(QString, address));
    };
    keep({});
    QVERIFY(driver.Connect());
    EVENTUALLY_COMPARE(recent->property("all").toStringList(), QStringList("127.0.0.1"));
    driver.Press("connectButton");
    EVENTUALLY_VERIFY(!driver.manager->IsConnected());
    keep({"10.0.0.3", "10.0.0.2", "10.0.0.1"});
    driver.Type("ipField", "9");
    driver.Key(Qt::Key_Down);
    QVERIFY(driver.Has("recentAddress_2"));
    QTest::keyClick(&driver.view(), '8');  // typing works while the list is open
    EVENTUALLY_VERIFY(!driver.Has("recentAddress_0"));
    QCOMPARE(driver.Text("ipField"), "98");
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Delete, Qt::Key_Down, Qt::Key_Return}) driver.Key(key);
    QCOMPARE(driver.manager->ip_address(), "10.0.0.3");
    driver.Click("recentAddressesButton");
    driver.Click("recentAddress_0");
    QCOMPARE(driver.manager->ip_address(), "10.0.0.2");
    QVERIFY(!driver.manager->GetIsConnectingLidar());
    keep({});
    QVERIFY(!driver.Has("recentAddressesButton"));
  }

  void StartModelIsTheOnlyOneOrUnknown() {
    for (const char* start_model : {"Zelto-KTC", "Nobody"}) {
      const WindowDriver driver(start_model);
      const bool known = QString(start_model) != "Nobody";
      QCOMPARE(driver.Find("modelCombo")->isEnabled(), !known);  // the only choice
      QCOMPARE(driver.Property("modelCombo", "displayText"), known ? start_model : "Quenta");
    }
  }
};
const RegisterTest<ConnectionTest> register_connection_test;

}  // namespace

#include "connection_test.moc"
