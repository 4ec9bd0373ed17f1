#include <QProcess>

#include "tests/ui/window_driver.h"

namespace {

/// Sends real events through the X server and the window manager.
class RealInputDriver : public WindowDriver {
 public:
  /// The window is kept busy meanwhile: it gets all the events at once, including the change of focus.
  static void Do(const QStringList& arguments) {
    if (QProcess::execute("xdotool", arguments) != 0) qFatal("xdotool fails");
  }

  static void RealKey(const char* key) { Do({"key", key}); }

  /// `shift` pixels from the centre, because quick clicks at the same place would be double clicks.
  void RealClick(const QString& name, int shift = 0) const { RealClickAndType(name, {}, shift); }

  /// The keys follow right after the click; the pause lets the window manager pass the click on.
  void RealClickAndType(const QString& name, const QStringList& keys, int shift = 0) const {
    const QQuickItem* const item = Find(name);
    const QPoint at = item->mapToGlobal({item->width() / 2 + shift, item->height() / 2}).toPoint();
    QStringList arguments = {"mousemove", QString::number(at.x()), QString::number(at.y()), "click", "1"};
    if (!keys.isEmpty()) arguments += QStringList{"sleep", "0.05", "key"} + keys;
    Do(arguments);
  }
};

class FocusTest : public QObject {
  Q_OBJECT
 private slots:
  void ClickedFieldsGetTheKeys() {
    const RealInputDriver driver;
    driver.RealClick("tab_9");
    for (int click = 0; click < 50; ++click) {
      const QString field = click % 2 == 0 ? "commandCodeField" : "commandPayloadField";
      const QString text = QString::number(click % 10) + driver.Text(field);
      driver.RealClickAndType(field, {"Home", text.left(1)});
      EVENTUALLY_VERIFY2(driver.Text(field) == text, qPrintable(QString("key %1").arg(click)));
    }
  }

  void ReturnClosesTheNoticeThatAClickOpened() {
    const RealInputDriver driver;
    for (int notice = 0; notice < 20; ++notice) {
      driver.RealClick("saveButton_0", notice % 2 == 0 ? -20 : 20);
      QVERIFY(driver.NoticeShows("successWindow", "Please connect to lidar first"));
      RealInputDriver::RealKey("Return");
      EVENTUALLY_VERIFY2(!driver.IsOpen("successWindow"), qPrintable(QString("notice %1").arg(notice)));
    }
  }

  void KeyboardComesBackFromAClosedWindow() {
    const RealInputDriver driver;
    for (int round = 0; round < 10; ++round) {
      QMetaObject::invokeMethod(driver.root, "openLog");
      auto* const log = driver.root->property("logWindow").value<QQuickWindow*>();
      QVERIFY(QTest::qWaitForWindowActive(log, kPatienceMs));
      log->close();
      const auto has_keyboard = [&] { return QGuiApplication::focusWindow() == &driver.view(); };
      EVENTUALLY_VERIFY2(has_keyboard(), qPrintable(QString("round %1").arg(round)));
    }
  }
};
const RegisterTest<FocusTest> register_focus_test;

}  // namespace

#include "focus_test.moc"
