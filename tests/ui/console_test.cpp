#include "tests/ui/ui_test.h"

namespace {

class ConsoleTest : public QObject {
  Q_OBJECT
 private slots:
  void SendsShowsAndRecalls();
  void NothingIsSentWithoutAConnection();
};
const RegisterTest<ConsoleTest> registration;

void ConsoleTest::SendsShowsAndRecalls() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.Click("tab_9");
  desk.Enter("commandCodeField", "0x07");
  QTRY_VERIFY(desk.Has("historyRow_0"));
  QVERIFY(desk.Text("replyHeader").split(' ').size() == 8);
  QVERIFY(!desk.Text("replyPayload").isEmpty());
  desk.Type("commandCodeField", "8");
  desk.Click("sendButton");
  QTRY_COMPARE(desk.manager->CommandLogCnt(), 2);
  QCOMPARE(desk.Find("historyRow_0")->property("code"), "8");
  desk.Find("commandCodeField")->forceActiveFocus();
  desk.Key(Qt::Key_Up);
  QCOMPARE(desk.Text("commandCodeField"), "8");
  desk.Key(Qt::Key_Up);
  QCOMPARE(desk.Text("commandCodeField"), "07");
  desk.Key(Qt::Key_Up);  // there is no older one
  QCOMPARE(desk.Text("commandCodeField"), "07");
  desk.Key(Qt::Key_Down);
  QCOMPARE(desk.Text("commandCodeField"), "8");
  desk.Key(Qt::Key_Down);
  QCOMPARE(desk.Text("commandCodeField"), "");
  desk.Click("historyRow_1");
  QCOMPARE(desk.Text("commandCodeField"), "07");
}

void ConsoleTest::NothingIsSentWithoutAConnection() {
  Desk desk;
  desk.Click("tab_9");
  QVERIFY(!desk.Find("sendButton")->isEnabled());
  desk.Enter("commandCodeField", "07");
  QCOMPARE(desk.manager->CommandLogCnt(), 0);
  QCOMPARE(desk.Text("commandCodeField"), "07");
}

}  // namespace

#include "console_test.moc"
