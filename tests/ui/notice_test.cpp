#include "tests/ui/desk.h"

namespace {

class NoticeTest : public QObject {
  Q_OBJECT
 private slots:
  void ErrorsQueueUp() {
    Desk desk;
    const char* const texts[] = {"one", "two", "two", "three"};
    for (const char* text : texts) desk.manager->setErrorMsg(text);
    for (const char* text : texts) {
      QVERIFY(desk.NoticeShows("errorWindow", text));
      EVENTUALLY_VERIFY(desk.Find("noticeAcceptButton")->hasActiveFocus());
      desk.Key(Qt::Key_Return);
    }
    EVENTUALLY_VERIFY(!desk.IsOpen("errorWindow"));
  }

  void AboutAndRestartMenu() {
    Desk desk;
    desk.Click("aboutButton");
    QVERIFY(desk.Dismiss("aboutWindow", "Version", Qt::Key_Escape));
    QVERIFY(desk.Connect());
    desk.Click("restartButton");
    EVENTUALLY_VERIFY(desk.Has("restartItem"));
    QCOMPARE(desk.Text("resetItem"), "Reset All Settings");
    desk.Click("restartItem");
    QVERIFY(desk.Dismiss("messageWindow", QString("127.0.0.1:%1, Quenta, SN QU").arg(desk.sensor.port())));
    desk.Click("restartButton");
    desk.Click("restartItem");
    desk.Click("noticeAcceptButton");
    EVENTUALLY_COMPARE(desk.sensor.restarts(), 1U);
    EVENTUALLY_VERIFY(!desk.manager->IsConnected());
    desk.Click("restartButton");
    EVENTUALLY_VERIFY(desk.Has("resetItem") && !desk.Find("resetItem")->isEnabled());
    QCOMPARE(desk.Property("resetItem", "reason"), "connect first");
  }

  void FocusReturnsToWhereItWas() {
    Desk desk;
    const auto has_focus = [&desk](const char* name) { return desk.Find(name)->hasActiveFocus(); };
    EVENTUALLY_VERIFY(has_focus("tab_0"));
    for (const char* name : {"aboutButton", "restartButton", "modelCombo", "saveButton_0"}) {
      desk.Find(name)->forceActiveFocus(Qt::TabFocusReason);
      desk.Key(Qt::Key_Space);
      EVENTUALLY_VERIFY2(!has_focus(name) || desk.Property(name, "down").toBool(), name);
      desk.Key(Qt::Key_Escape);
      EVENTUALLY_VERIFY2(has_focus(name) && !desk.Property(name, "down").toBool(), name);
    }
    desk.ShowPage(1);  // and the button that has the focus is gone
    EVENTUALLY_VERIFY(has_focus("tab_1"));
    desk.Click("tab_9");
    desk.Type("commandCodeField", "12");
    desk.manager->setErrorMsg("It fails.");
    QVERIFY(desk.Dismiss("errorWindow", "It fails."));
    EVENTUALLY_VERIFY(has_focus("commandCodeField"));
    desk.Key(Qt::Key_3);
    QCOMPARE(desk.Text("commandCodeField"), "123");
  }

  void ConsoleSendsShowsAndRecalls() {
    Desk desk;
    desk.Click("tab_9");
    QVERIFY(!desk.Find("sendButton")->isEnabled());
    desk.Enter("commandCodeField", "07");  // not connected
    QCOMPARE(desk.Text("commandCodeField"), "07");
    QVERIFY(desk.Connect());
    desk.Click("tab_9");
    desk.Enter("commandCodeField", "0x07");
    EVENTUALLY_VERIFY(desk.Has("historyRow_0"));
    QCOMPARE(desk.Text("replyHeader").split(' ').size(), 8);
    QVERIFY(!desk.Text("replyPayload").isEmpty());
    desk.Type("commandCodeField", "8");
    desk.Click("sendButton");
    EVENTUALLY_COMPARE(desk.Property("historyRow_0", "code"), "8");
    desk.Find("commandCodeField")->forceActiveFocus();
    const std::pair<Qt::Key, const char*> steps[] = {
        {Qt::Key_Up, "8"}, {Qt::Key_Up, "07"}, {Qt::Key_Up, "07"}, {Qt::Key_Down, "8"}, {Qt::Key_Down, ""}};
    for (const auto& [key, code] : steps) {
      desk.Key(key);
      QCOMPARE(desk.Text("commandCodeField"), code);
    }
    desk.Click("historyRow_1");
    QCOMPARE(desk.Text("commandCodeField"), "07");
  }
};
const RegisterTest<NoticeTest> register_notice_test;

}  // namespace

#include "notice_test.moc"
