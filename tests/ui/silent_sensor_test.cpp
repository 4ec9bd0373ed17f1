#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>

#include "tests/ui/desk.h"

Q_DECLARE_METATYPE(std::function<void(Desk&)>)

namespace {

// What waits for the sensor takes four seconds or more; less is only a busy machine.
constexpr qint64 kAllowedMs = 1000;

using Start = std::function<void(Desk&)>;

/// Whatever the window starts with a sensor that stays silent, it goes on answering its user and closes when
/// asked.
class SilentSensorTest : public QObject {
  Q_OBJECT
 private slots:
  void GoesOnAndCloses_data() {
    const Table<QString, Start> row("model", "start");
    row("page", "Quenta", [](auto& desk) { desk.Key(Qt::Key_3, Qt::ControlModifier); });
    row("save", "Quenta", [](auto& desk) {
      desk.manager->SetText(1, 4, 3, 0, "77");
      desk.manager->RunInBackground(4);
    });
    row("console", "Quenta", [](auto& desk) { desk.manager->SendCommandInBackground("07", ""); });
    row("download", "Quenta", [](auto& desk) { desk.manager->DownloadLog(Url(desk, ""), "Fault Log"); });
    row("upgrade", "Quenta", [](auto& desk) { desk.manager->UpgradeLidar(Package(desk), 6, 1, 0); });
    row("disconnect", "Quenta", [](auto& desk) { desk.Click("connectButton"); });
    row("upgrade on lines", "Zelto", [](auto& desk) { desk.manager->ZeltoUpgradeLidar(Package(desk)); });
    row("function inside KTC", "Marvo-KTC",
        [](auto& desk) { QMetaObject::invokeMethod(desk.manager->smallSensor(), "readSafety"); });
    row("upgrade inside KTC", "Marvo-KTC",
        [](auto& desk) { desk.manager->MarvoUpgradeLidar(Package(desk)); });
  }
  void GoesOnAndCloses() {
    QFETCH(QString, model);
    QFETCH(Start, start);
    Desk desk(model);
    QVERIFY(desk.Connect());
    desk.sensor.AddFault("*=silence");
    for (const char* command : {"ldcmd:8", "ota:1"}) desk.lines.AddFault(command + std::string("=silence"));
    QElapsedTimer turn;
    turn.start();
    start(desk);
    QVERIFY(turn.elapsed() < kAllowedMs);
    for (int i = 0; i < 20; ++i) {
      turn.start();
      QTest::qWait(10);
      QVERIFY(turn.elapsed() < kAllowedMs);
    }
    turn.start();
    desk.window.reset();
    QVERIFY(turn.elapsed() < kAllowedMs);
  }

 private:
  static QUrl Url(const Desk& desk, const QString& name) {
    return QUrl::fromLocalFile(desk.folder.filePath(name));
  }
  static QUrl Package(const Desk& desk) {
    QFile file(desk.folder.filePath("package"));
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(100000, 'x')) != 100000)
      qFatal("no package");
    return Url(desk, "package");
  }
};
const RegisterTest<SilentSensorTest> register_silent_sensor_test;

}  // namespace

#include "silent_sensor_test.moc"
