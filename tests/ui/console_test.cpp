#include "tests/ui/ui_test.h"

namespace {

class ConsoleTest : public QObject {
  Q_OBJECT
 private slots:
  void SendsShowsAndRecalls() {
    Desk desk;
    desk.Click("tab_9");
    QVERIFY(!desk.Find("sendButton")->isEnabled());
    desk.Enter("commandCodeField", "07");  // not connected
    QCOMPARE(desk.Text("commandCodeField"), "07");
    QVERIFY(desk.Connect());
    desk.Click("tab_9");
    desk.Enter("commandCodeField", "0x07");
    QTRY_VERIFY(desk.Has("historyRow_0"));
    QCOMPARE(desk.Text("replyHeader").split(' ').size(), 8);
    QVERIFY(!desk.Text("replyPayload").isEmpty());
    desk.Type("commandCodeField", "8");
    desk.Click("sendButton");
    QTRY_COMPARE(desk.manager->CommandLogCnt(), 2);
    QCOMPARE(desk.Property("historyRow_0", "code"), "8");
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
const RegisterTest<ConsoleTest> registration;

}  // namespace

#include "console_test.moc"
