#include <QAbstractItemModel>
#include <QElapsedTimer>
#include <QRegularExpression>

#include "tests/ui/ui_test.h"

namespace {

// The log window of a desk, opened by its button.
struct OpenLog {
  explicit OpenLog(const Desk& desk) {
    desk.Key(Qt::Key_9, Qt::ControlModifier);
    desk.Click("openLogButton");
    window = desk.view().rootObject()->property("logWindow").value<QQuickWindow*>();
    log = window->property("log").value<QAbstractItemModel*>();
    if (!QTest::qWaitForWindowExposed(window)) qFatal("the log does not open");
  }

  /// The lines whose level and message match.
  QStringList Lines(const char* pattern = "") const {
    QStringList lines;
    const auto roles = log->roleNames();
    for (int row = 0; row < log->rowCount(); ++row) {
      lines << log->index(row, 0).data(roles.key("levelName")).toString() + ' ' +
                   log->index(row, 0).data(roles.key("message")).toString();
    }
    return lines.filter(QRegularExpression(pattern));
  }
  void Click(const QString& name) const {
    const auto* const item = window->findChild<QQuickItem*>(name);
    const QPointF left = item->mapToScene({10, item->height() / 2});
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, left.toPoint());
  }

  QQuickWindow* window = nullptr;
  QAbstractItemModel* log = nullptr;
};

class LogWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void LinesComeByLevel() {
    Desk desk;
    const std::pair<const char*, const char*> lines[] = {{"a", "INFO"},  {"b", "ERROR"}, {"c", "WARNING"},
                                                         {"d", "BYTES"}, {"e", "BYTE"},  {"f", "other"},
                                                         {"", "INFO"}};
    for (const auto& [text, type] : lines) emit desk.manager->sendLogMessage(text, type);
    const OpenLog opened(desk);
    QCOMPARE(opened.window->title(), "VK Log Window");
    QTRY_COMPARE(opened.Lines(),
                 (QStringList{"INFO a", "ERROR b", "WARN c", "BYTES d", "BYTES e", "INFO f"}));
  }

  void ByteFlowAndFilter() {
    Desk desk;
    QVERIFY(desk.Connect());
    const OpenLog opened(desk);
    QTRY_COMPARE(opened.Lines("INFO Lidar connected").size(), 1);
    QVERIFY(opened.Lines("^BYTES").isEmpty());
    opened.Click("byteFlowSwitch");
    desk.manager->ReadPageInBackground(0);
    QTRY_VERIFY(!opened.Lines("^BYTES").isEmpty());
    opened.Click("logPauseButton");
    const int shown = opened.log->rowCount();
    desk.manager->ReadPageInBackground(0);
    QTRY_VERIFY(opened.log->property("waiting").toInt() > 0);
    QCOMPARE(opened.log->rowCount(), shown);
    opened.Click("logClearButton");
    QCOMPARE(opened.log->rowCount(), 0);
  }

  void TenThousandLinesDoNotHoldTheWindowUp() {
    Desk desk;
    const OpenLog opened(desk);
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
};
const RegisterTest<LogWindowTest> registration;

}  // namespace

#include "log_window_test.moc"
