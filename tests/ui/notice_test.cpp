#include "tests/ui/ui_test.h"

namespace {

class NoticeTest : public QObject {
  Q_OBJECT
 private slots:
  void ErrorsQueueUp() {
    Desk desk;
    const char* const texts[] = {"one", "two", "two", "three"};
    for (const char* text : texts) desk.manager->setErrorMsg(text);
    QObject* const window = desk.Notice("errorWindow");
    for (const char* text : texts) {
      QTRY_VERIFY(window->property("opened").toBool() && desk.Find("noticeAcceptButton")->hasActiveFocus());
      QCOMPARE(window->property("message"), text);
      desk.Key(Qt::Key_Return);
    }
    QTRY_VERIFY(!window->property("visible").toBool());
  }

  void LongTextStaysInTheWindow() {
    Desk desk;
    desk.manager->setErrorMsg(QString("a sentence that goes on and on. ").repeated(300));
    QVERIFY(desk.NoticeShows("errorWindow", "on and on"));
    const QQuickItem* const button = desk.Find("noticeAcceptButton");
    QVERIFY(button->mapToScene({0, button->height()}).y() < desk.view().height());
  }

  void AboutAndRestartMenu() {
    Desk desk;
    desk.Click("aboutButton");
    QVERIFY(desk.NoticeShows("aboutWindow", "Version"));
    QVERIFY(desk.Dismiss("aboutWindow", Qt::Key_Escape));
    QVERIFY(desk.Connect());
    desk.Click("restartButton");
    QTRY_VERIFY(desk.Has("restartItem"));
    QCOMPARE(desk.Find("restartItem")->height(), 42.0);
    QCOMPARE(desk.Text("resetItem"), "Reset All Settings");
    desk.Key(Qt::Key_Escape);
    QTRY_VERIFY(!desk.Has("restartItem"));
  }
};
const RegisterTest<NoticeTest> registration;

}  // namespace

#include "notice_test.moc"
