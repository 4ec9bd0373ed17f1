#include <QAbstractItemModel>
#include <QElapsedTimer>
#include <QRegularExpression>

#include "tests/ui/ui_test.h"

namespace {

class LogWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void LinesComeByLevel();
  void ByteFlowAndFilter();
  void TenThousandLinesDoNotHoldTheWindowUp();
};
const RegisterTest<LogWindowTest> registration;

// The log window of a desk, opened by its button.
struct OpenLog {
  explicit OpenLog(const Desk& desk) {
    desk.Key(Qt::Key_9, Qt::ControlModifier);
    desk.Click("openLogButton");
    window = desk.view().rootObject()->property("logWindow").value<QQuickWindow*>();
    log = window->property("log").value<QAbstractItemModel*>();
  }

  QStringList Lines() const {
    QStringList lines;
    const auto roles = log->roleNames();
    for (int row = 0; row < log->rowCount(); ++row) {
      lines << log->index(row, 0).data(roles.key("levelName")).toString() + ' ' +
                   log->index(row, 0).data(roles.key("message")).toString();
    }
    return lines;
  }

  QQuickWindow* window = nullptr;
  QAbstractItemModel* log = nullptr;
};

void LogWindowTest::LinesComeByLevel() {
  Desk desk;
  emit desk.manager->sendLogMessage("a", "INFO");
  emit desk.manager->sendLogMessage("b", "ERROR");
  emit desk.manager->sendLogMessage("c", "WARNING");
  emit desk.manager->sendLogMessage("d", "BYTES");
  emit desk.manager->sendLogMessage("e", "BYTE");
  emit desk.manager->sendLogMessage("f", "other");
  emit desk.manager->sendLogMessage("", "INFO");
  const OpenLog opened(desk);
  QCOMPARE(opened.window->title(), "VK Log Window");
  QTRY_VERIFY(opened.window->isExposed());
  const QStringList wanted{"INFO a", "ERROR b", "WARN c", "BYTES d", "BYTES e", "INFO f"};
  QTRY_COMPARE(opened.Lines(), wanted);
}

void LogWindowTest::ByteFlowAndFilter() {
  Desk desk;
  QVERIFY(desk.Connect());
  const OpenLog opened(desk);
  QTRY_VERIFY(opened.window->isExposed());
  QTRY_COMPARE(opened.Lines().filter("INFO Lidar connected").size(), 1);
  QVERIFY(opened.Lines().filter(QRegularExpression("^BYTES")).isEmpty());
  const auto click = [&opened](const QString& name) {
    const auto* const item = opened.window->findChild<QQuickItem*>(name);
    const QPointF left = item->mapToScene({10, item->height() / 2});
    QTest::mouseClick(opened.window, Qt::LeftButton, Qt::NoModifier, left.toPoint());
  };
  click("byteFlowSwitch");
  desk.manager->ReadPageInBackground(0);
  QTRY_VERIFY(!opened.Lines().filter(QRegularExpression("^BYTES")).isEmpty());
  click("logPauseButton");
  const int shown = opened.log->rowCount();
  desk.manager->ReadPageInBackground(0);
  QTRY_VERIFY(opened.log->property("waiting").toInt() > 0);
  QCOMPARE(opened.log->rowCount(), shown);
  click("logClearButton");
  QCOMPARE(opened.log->rowCount(), 0);
}

void LogWindowTest::TenThousandLinesDoNotHoldTheWindowUp() {
  Desk desk;
  const OpenLog opened(desk);
  QTRY_VERIFY(opened.window->isExposed());
  for (int batch = 0; batch < 24; ++batch) {
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 500; ++i) {
      emit desk.manager->sendLogMessage(QString("7E 00 FF %1 ").arg(i).repeated(20), "BYTES");
    }
    QTRY_COMPARE(opened.log->rowCount(), std::min(10000, (batch + 1) * 500));
    QCoreApplication::processEvents();
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
  }
}

}  // namespace

#include "log_window_test.moc"
