#include <QApplication>
#include <QElapsedTimer>

#include "tests/support/silent_address.h"
#include "tests/ui/ui_test.h"

namespace {

constexpr int kAllowedMs = 1000;

// Closing the window, whatever goes on, ends everything within a second.
class ClosingTest : public QObject {
  Q_OBJECT
 private slots:
  void Idle();
  void WithTheLogOpen();
  void WhileConnectingToASilentAddress();
  void WhileRefreshing();
  void WhileReadingFromASensorThatWentSilent();
};
const RegisterTest<ClosingTest> registration;

qint64 MillisecondsToClose(Desk& desk) {
  QElapsedTimer timer;
  timer.start();
  QMetaObject::invokeMethod(desk.window.get(), "close", Qt::QueuedConnection);
  QApplication::exec();
  desk.window.reset();
  return timer.elapsed();
}

void ClosingTest::Idle() {
  Desk desk;
  QVERIFY(MillisecondsToClose(desk) < kAllowedMs);
}

void ClosingTest::WithTheLogOpen() {
  Desk desk;
  desk.Key(Qt::Key_9, Qt::ControlModifier);
  desk.Click("openLogButton");
  auto* const log = desk.view().rootObject()->property("logWindow").value<QQuickWindow*>();
  QTRY_VERIFY(log->isExposed());
  QVERIFY(MillisecondsToClose(desk) < kAllowedMs);
}

void ClosingTest::WhileConnectingToASilentAddress() {
  const quarn::test::SilentAddress silent;
  Desk desk;
  desk.Dial(silent.port());
  QTRY_VERIFY(desk.manager->GetIsConnectingLidar());
  QVERIFY(MillisecondsToClose(desk) < kAllowedMs);
}

void ClosingTest::WhileRefreshing() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.ShowPage(1);
  QVERIFY(MillisecondsToClose(desk) < kAllowedMs);
}

void ClosingTest::WhileReadingFromASensorThatWentSilent() {
  Desk desk;
  QVERIFY(desk.Connect());
  desk.sensor.Misbehave("*=silence");
  desk.Key(Qt::Key_3, Qt::ControlModifier);
  QVERIFY(desk.manager->isReadingPage());
  QVERIFY(desk.sensor.WaitReceived(0x08, 1, std::chrono::seconds(5)));
  QVERIFY(MillisecondsToClose(desk) < kAllowedMs);
}

}  // namespace

#include "closing_test.moc"
