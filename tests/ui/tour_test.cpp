#include "tools/tour/tour.h"

#include <QDir>
#include <QImage>

#include "tests/ui/window_driver.h"

namespace {

class TourTest : public QObject {
  Q_OBJECT
 private slots:
  void TourPicturesEveryPageIfThereIsASensor() {
    WindowDriver driver;
    driver.sensor.SetValue("SN", "");  // causes a warning, which must not appear in the pictures
    const tour::Plan plan{driver.folder.filePath("new/pictures"), "127.0.0.1",
                          QString::number(driver.sensor.port())};
    QCOMPARE(tour::Run(*driver.window, plan), 0);
    QVERIFY(!driver.manager->IsConnected());
    QVERIFY(!driver.IsOpen("errorWindow"));
    const QDir pictures(plan.folder);
    const QStringList names = pictures.entryList({"*.png"});
    QCOMPARE(names.size(), driver.manager->level1List().size() + 3);
    const QImage first(pictures.filePath(names[0]));
    QCOMPARE(first.size(), driver.view().size());
    QVERIFY(first != QImage(pictures.filePath(names[1])));
    driver.sensor.Stop();
    QCOMPARE(tour::Run(*driver.window, plan), 1);
  }
};
const RegisterTest<TourTest> register_tour_test;

}  // namespace

#include "tour_test.moc"
