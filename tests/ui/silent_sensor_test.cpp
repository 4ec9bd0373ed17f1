#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>

#include "tests/ui/window_driver.h"

Q_DECLARE_METATYPE(std::function<void(WindowDriver&)>)

namespace {

// An operation that waits for the sensor takes at least four seconds; less only means a busy machine.
constexpr qint64 kAllowedMs = 1000;

using Start = std::function<void(WindowDriver&)>;

/// Whatever the window does while the sensor stays silent, it keeps responding to the user and closes on
/// request.
class SilentSensorTest : public QObject {
  Q_OBJECT
 private slots:
  void RespondsAndCloses_data() {
    const Table<QString, Start> row("model", "start");
    row("page", "Quenta", [](auto& driver) { driver.Key(Qt::Key_3, Qt::ControlModifier); });
    row("save", "Quenta", [](auto& driver) {
      driver.manager->SetText(1, 4, 3, 0, "77");
      driver.manager->RunInBackground(4);
    });
    row("console", "Quenta", [](auto& driver) { driver.manager->SendCommandInBackground("07", ""); });
    row("download", "Quenta",
        [](auto& driver) { driver.manager->DownloadLog(Url(driver, ""), "Fault Log"); });
    row("upgrade", "Quenta", [](auto& driver) { driver.manager->UpgradeLidar(Package(driver), 6, 1, 0); });
    row("disconnect", "Quenta", [](auto& driver) { driver.Click("connectButton"); });
    row("upgrade on lines", "Zelto",
        [](auto& driver) { driver.manager->ZeltoUpgradeLidar(Package(driver)); });
    row("function inside KTC", "Marvo-KTC",
        [](auto& driver) { QMetaObject::invokeMethod(driver.manager->smallSensor(), "readSafety"); });
    row("upgrade inside KTC", "Marvo-KTC",
        [](auto& driver) { driver.manager->MarvoUpgradeLidar(Package(driver)); });
  }
  void RespondsAndCloses() {
    QFETCH(QString, model);
    QFETCH(Start, start);
    WindowDriver driver(model);
    QVERIFY(driver.Connect());
    driver.sensor.AddFault("*=silence");
    for (const char* command : {"ldcmd:8", "ota:1"}) driver.lines.AddFault(command + std::string("=silence"));
    QElapsedTimer turn;
    turn.start();
    start(driver);
    QVERIFY(turn.elapsed() < kAllowedMs);
    for (int i = 0; i < 20; ++i) {
      turn.start();
      QTest::qWait(10);
      QVERIFY(turn.elapsed() < kAllowedMs);
    }
    turn.start();
    driver.window.reset();
    QVERIFY(turn.elapsed() < kAllowedMs);
  }

 private:
  static QUrl Url(const WindowDriver& driver, const QString& name) {
    return QUrl::fromLocalFile(driver.folder.filePath(name));
  }
  static QUrl Package(const WindowDriver& driver) {
    QFile file(driver.folder.filePath("package"));
    const bool written = file.open(QIODevice::WriteOnly) && file.write(QByteArray(100000, 'x')) == 100000;
    if (!written) qFatal("no package");
    return Url(driver, "package");
  }
};
const RegisterTest<SilentSensorTest> register_silent_sensor_test;

}  // namespace

#include "silent_sensor_test.moc"
