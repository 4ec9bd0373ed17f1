#include <QProcess>

#include "tests/ui/desk.h"

namespace {

/// A desk whose user has hands: real events of the X server, which reach the window by way of the window
/// manager.
class RealDesk : public Desk {
 public:
  /// Meanwhile the window is too busy to look: it finds all of it at once, the change of the focus included.
  static void Do(const QStringList& arguments) {
    if (QProcess::execute("xdotool", arguments) != 0) qFatal("xdotool fails");
  }

  static void RealKey(const char* key) { Do({"key", key}); }

  /// `shift` pixels beside the middle: clicks at one place in short order would be double clicks.
  void RealClick(const QString& name, int shift = 0) const { RealClickAndType(name, {}, shift); }

  /// The keys follow on the heels of the click; the pause is the window manager's to hand the click on.
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
    const RealDesk desk;
    desk.RealClick("tab_9");
    for (int click = 0; click < 50; ++click) {
      const QString field = click % 2 == 0 ? "commandCodeField" : "commandPayloadField";
      const QString text = QString::number(click % 10) + desk.Text(field);
      desk.RealClickAndType(field, {"Home", text.left(1)});
      EVENTUALLY_VERIFY2(desk.Text(field) == text, qPrintable(QString("key %1").arg(click)));
    }
  }

  void ReturnEndsTheNoticeThatAClickHasBrought() {
    const RealDesk desk;
    for (int notice = 0; notice < 20; ++notice) {
      desk.RealClick("saveButton_0", notice % 2 == 0 ? -20 : 20);
      QVERIFY(desk.NoticeShows("successWindow", "Please connect to lidar first"));
      RealDesk::RealKey("Return");
      EVENTUALLY_VERIFY2(!desk.IsOpen("successWindow"), qPrintable(QString("notice %1").arg(notice)));
    }
  }

  void KeyboardComesBackFromAClosedWindow() {
    const RealDesk desk;
    for (int round = 0; round < 10; ++round) {
      QMetaObject::invokeMethod(desk.root, "openLog");
      auto* const log = desk.root->property("logWindow").value<QQuickWindow*>();
      QVERIFY(QTest::qWaitForWindowActive(log, kPatienceMs));
      log->close();
      const auto has_keyboard = [&] { return QGuiApplication::focusWindow() == &desk.view(); };
      EVENTUALLY_VERIFY2(has_keyboard(), qPrintable(QString("round %1").arg(round)));
    }
  }
};
const RegisterTest<FocusTest> register_focus_test;

}  // namespace

#include "focus_test.moc"
