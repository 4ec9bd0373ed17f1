#include "tests/ui/window_driver.h"

namespace {

class NoticeTest : public QObject {
  Q_OBJECT
 private slots:
  void ErrorsQueueUp() {
    WindowDriver driver;
    const char* const texts[] = {"one", "two", "two", "three"};
    for (const char* text : texts) driver.manager->setErrorMsg(text);
    for (const char* text : texts) {
      QVERIFY(driver.NoticeShows("errorWindow", text));
      EVENTUALLY_VERIFY(driver.Find("noticeAcceptButton")->hasActiveFocus());
      driver.Key(Qt::Key_Return);
    }
    EVENTUALLY_VERIFY(!driver.IsOpen("errorWindow"));
  }

  void AboutAndRestartMenu() {
    WindowDriver driver;
    driver.Click("aboutButton");
    QVERIFY(driver.Dismiss("aboutWindow", "Version", Qt::Key_Escape));
    QVERIFY(driver.Connect());
    driver.Click("restartButton");
    EVENTUALLY_VERIFY(driver.Has("restartItem"));
    QCOMPARE(driver.Text("resetItem"), "Reset All Settings");
    driver.Click("restartItem");
    QVERIFY(
        driver.Dismiss("messageWindow", QString("127.0.0.1:%1, Quenta, SN QU").arg(driver.sensor.port())));
    driver.Click("restartButton");
    driver.Click("restartItem");
    driver.Click("noticeAcceptButton");
    EVENTUALLY_COMPARE(driver.sensor.restarts(), 1U);
    EVENTUALLY_VERIFY(!driver.manager->IsConnected());
    driver.Click("restartButton");
    EVENTUALLY_VERIFY(driver.Has("resetItem") && !driver.Find("resetItem")->isEnabled());
    QCOMPARE(driver.Property("resetItem", "reason"), "connect first");
  }

  void FocusReturnsToWhereItWas() {
    WindowDriver driver;
    const auto has_focus = [&driver](const char* name) { return driver.Find(name)->hasActiveFocus(); };
    EVENTUALLY_VERIFY(has_focus("tab_0"));
    for (const char* name : {"aboutButton", "restartButton", "modelCombo", "saveButton_0"}) {
      driver.Find(name)->forceActiveFocus(Qt::TabFocusReason);
      driver.Key(Qt::Key_Space);
      EVENTUALLY_VERIFY2(!has_focus(name) || driver.Property(name, "down").toBool(), name);
      driver.Key(Qt::Key_Escape);
      EVENTUALLY_VERIFY2(has_focus(name) && !driver.Property(name, "down").toBool(), name);
    }
    driver.ShowPage(1);  // hides the button that has the focus
    EVENTUALLY_VERIFY(has_focus("tab_1"));
    driver.Click("tab_9");
    driver.Type("commandCodeField", "12");
    driver.manager->setErrorMsg("It fails.");
    QVERIFY(driver.Dismiss("errorWindow", "It fails."));
    EVENTUALLY_VERIFY(has_focus("commandCodeField"));
    driver.Key(Qt::Key_3);
    QCOMPARE(driver.Text("commandCodeField"), "123");
  }

  void ConsoleSendsShowsAndRecalls() {
    WindowDriver driver;
    driver.Click("tab_9");
    QVERIFY(!driver.Find("sendButton")->isEnabled());
    driver.Enter("commandCodeField", "07");  // not connected
    QCOMPARE(driver.Text("commandCodeField"), "07");
    QVERIFY(driver.Connect());
    driver.Click("tab_9");
    driver.Enter("commandCodeField", "0x07");
    EVENTUALLY_VERIFY(driver.Has("historyRow_0"));
    QCOMPARE(driver.Text("replyHeader").split(' ').size(), 8);
    QVERIFY(!driver.Text("replyPayload").isEmpty());
    driver.Type("commandCodeField", "8");
    driver.Click("sendButton");
    EVENTUALLY_COMPARE(driver.Property("historyRow_0", "code"), "8");
    driver.Find("commandCodeField")->forceActiveFocus();
    const std::pair<Qt::Key, const char*> steps[] = {
        {Qt::Key_Up, "8"}, {Qt::Key_Up, "07"}, {Qt::Key_Up, "07"}, {Qt::Key_Down, "8"}, {Qt::Key_Down, ""}};
    for (const auto& [key, code] : steps) {
      driver.Key(key);
      QCOMPARE(driver.Text("commandCodeField"), code);
    }
    driver.Click("historyRow_1");
    QCOMPARE(driver.Text("commandCodeField"), "07");
  }
};
const RegisterTest<NoticeTest> register_notice_test;

}  // namespace

#include "notice_test.moc"
