#include "tools/tour/tour.h"

#include <QDir>
#include <QImage>

#include "tests/ui/desk.h"

namespace {

class TourTest : public QObject {
  Q_OBJECT
 private slots:
  void TourPhotographsEveryPageUnlessThereIsNoSensor() {
    Desk desk;
    desk.sensor.SetValue("SN", "");  // ends in a warning, which must not stay in the pictures
    const tour::Plan plan{desk.folder.filePath("new/pictures"), "127.0.0.1",
                          QString::number(desk.sensor.port())};
    QCOMPARE(tour::Run(*desk.window, plan), 0);
    QVERIFY(!desk.manager->IsConnected());
    QVERIFY(!desk.IsOpen("errorWindow"));
    const QDir pictures(plan.folder);
    const QStringList names = pictures.entryList({"*.png"});
    QCOMPARE(names.size(), desk.manager->level1List().size() + 3);
    const QImage first(pictures.filePath(names[0]));
    QCOMPARE(first.size(), desk.view().size());
    QVERIFY(first != QImage(pictures.filePath(names[1])));
    desk.sensor.Stop();
    QCOMPARE(tour::Run(*desk.window, plan), 1);
  }
};
const RegisterTest<TourTest> register_tour_test;

}  // namespace

#include "tour_test.moc"
