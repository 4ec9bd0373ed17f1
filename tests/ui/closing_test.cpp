#include <QApplication>
#include <QElapsedTimer>

#include "tests/support/silent_address.h"
#include "tests/ui/ui_test.h"

namespace {

// Closing the window, whatever goes on, ends everything within a second.
class ClosingTest : public QObject {
  Q_OBJECT
 private slots:
  void EndsWithinASecond_data() {
    const Table<int> row("moment");
    int moment = 0;
    for (const char* name :
         {"log open", "connecting to a silent address", "refreshing", "reading from a silent sensor"}) {
      row(name, moment++);
    }
  }
  void EndsWithinASecond() {
    QFETCH(int, moment);
    const quarn::test::SilentAddress silent;
    Desk desk;
    if (moment == 0) {
      desk.Key(Qt::Key_9, Qt::ControlModifier);
      desk.Click("openLogButton");
      auto* const log = desk.view().rootObject()->property("logWindow").value<QQuickWindow*>();
      QTRY_VERIFY(log->isExposed());
    } else if (moment == 1) {
      desk.Dial(silent.port());
      QTRY_VERIFY(desk.manager->GetIsConnectingLidar());
    } else {
      QVERIFY(desk.Connect());
      if (moment == 2) desk.ShowPage(1);
      if (moment == 3) {
        desk.sensor.Misbehave("*=silence");
        desk.Key(Qt::Key_3, Qt::ControlModifier);
        QVERIFY(desk.sensor.WaitReceived(0x08, 1, std::chrono::seconds(5)));
      }
    }
    QElapsedTimer timer;
    timer.start();
    QMetaObject::invokeMethod(desk.window.get(), "close", Qt::QueuedConnection);
    QApplication::exec();
    desk.window.reset();
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
  }
};
const RegisterTest<ClosingTest> registration;

}  // namespace

#include "closing_test.moc"
