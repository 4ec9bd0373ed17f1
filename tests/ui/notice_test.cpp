#include "tests/ui/ui_test.h"

namespace {

class NoticeTest : public QObject {
  Q_OBJECT
 private slots:
  void ErrorsQueueUp();
  void LongTextStaysInTheWindow();
  void About();
  void RestartMenu();
};
const RegisterTest<NoticeTest> registration;

void NoticeTest::ErrorsQueueUp() {
  Desk desk;
  for (const char* text : {"one", "two", "two", "three"}) {
    desk.manager->setErrorMsg(text);
  }
  QObject* const window = desk.Notice("errorWindow");
  for (const char* text : {"one", "two", "two", "three"}) {
    QTRY_VERIFY(window->property("opened").toBool() && desk.Find("noticeAcceptButton")->hasActiveFocus());
    QCOMPARE(window->property("message"), text);
    desk.Key(Qt::Key_Return);
  }
  QTRY_VERIFY(!window->property("visible").toBool());
}

void NoticeTest::LongTextStaysInTheWindow() {
  Desk desk;
  desk.manager->setErrorMsg(QString("a sentence that goes on and on. ").repeated(300));
  QVERIFY(desk.NoticeShows("errorWindow", "on and on"));
  const QQuickItem* const button = desk.Find("noticeAcceptButton");
  QVERIFY(button->mapToScene({0, button->height()}).y() < desk.view().height());
}

void NoticeTest::About() {
  Desk desk;
  desk.Click("aboutButton");
  QVERIFY(desk.NoticeShows("aboutWindow", "Version"));
  desk.Key(Qt::Key_Escape);
  QTRY_VERIFY(!desk.Notice("aboutWindow")->property("visible").toBool());
}

void NoticeTest::RestartMenu() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.Click("restartButton");
  QTRY_VERIFY(desk.Has("restartItem"));
  QCOMPARE(desk.Find("restartItem")->height(), 42.0);
  QCOMPARE(desk.Text("resetItem"), "Reset All Settings");
  desk.Key(Qt::Key_Escape);
  QTRY_VERIFY(!desk.Has("restartItem"));
}

}  // namespace

#include "notice_test.moc"
