#include "VarkelCore/src/snapshots/snapshots.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QUrl>

#include "tests/core/core_test.h"

namespace {

using varkel::DifferenceList;
using varkel::Snapshots;

/// A connected controller that has compared a snapshot with the sensor, which has changed since.
struct SnapshotsFixture : ControllerFixture {
  SnapshotsFixture() {
    if (!ConnectOn()) qFatal("no connection");
    const QUrl file = QUrl::fromLocalFile(folder.filePath("s.json"));
    snapshots.save(file);
    Finish();
    sensor->SetValue("Spin Rate", "1200");
    sensor->SetValue("Sync Angle", "45");
    snapshots.compareFile(file);
    Finish();
    differences.selectAll(true);
  }
  void Finish() {
    if (!Wait([this] { return !snapshots.is_busy() && !manager->isWorking(); })) qFatal("it does not end");
  }
  bool Plan() {
    snapshots.plan();
    Finish();
    const bool is_planned = !plans.isEmpty();
    plans.clear();
    return is_planned;
  }

  QTemporaryDir folder;
  Snapshots& snapshots = *qobject_cast<Snapshots*>(manager->snapshots());
  DifferenceList& differences = *qobject_cast<DifferenceList*>(snapshots.differences());
  QSignalSpy plans{&snapshots, &Snapshots::planned};
};

class SnapshotsTest : public QObject {
  Q_OBJECT
 private slots:
  void WritesOnlyWhatWasAgreed() {
    SnapshotsFixture fixture;
    QVERIFY(fixture.Plan());
    fixture.sensor->SetValue("Spin Rate", "300");
    fixture.snapshots.apply();
    QVERIFY(fixture.NextError().startsWith("The sensor has changed since this was planned"));
    fixture.Finish();
    fixture.snapshots.apply();
    QVERIFY(fixture.NextError().contains("nothing was written"));
    QCOMPARE(fixture.sensor->ValueText("Spin Rate"), std::string("300"));
    QVERIFY(fixture.Plan());
    fixture.snapshots.apply();
    fixture.Finish();
    QCOMPARE(fixture.sensor->ValueText("Spin Rate"), std::string("600"));
    fixture.differences.selectAll(true);
    QVERIFY(!fixture.Plan());
    QCOMPARE(fixture.snapshots.outcome(),
             QString("Nothing to write: the sensor already holds these values."));
  }

  void ADisconnectEndsItAtOnce() {
    SnapshotsFixture fixture;
    QVERIFY(fixture.Plan());
    fixture.AddFault("0x41=silence");
    fixture.snapshots.apply();
    QVERIFY(fixture.Wait([&] { return !fixture.sensor->Received(0x41).empty(); }));
    fixture.manager->RunInBackground(0);
    QCOMPARE(fixture.NextError(), QString("Please wait until the snapshot has been applied"));
    QElapsedTimer timer;
    timer.start();
    fixture.manager->Stop();
    fixture.Finish();
    QVERIFY(timer.elapsed() < 1000);
    QVERIFY(!fixture.snapshots.is_applying());
    QVERIFY(fixture.snapshots.outcome().contains("1 sent, not confirmed, 1 not sent"));
    QVERIFY(fixture.NextError().startsWith("Stopped"));
    fixture.snapshots.plan();
    QCOMPARE(fixture.NextError(), QString("Please connect to lidar first"));
  }

  void ALostConnectionIsReported() {
    SnapshotsFixture fixture;
    QVERIFY(fixture.Plan());
    fixture.AddFault("0x41=close:0");
    fixture.snapshots.apply();
    QVERIFY(fixture.NextError().startsWith("The connection was lost"));
    fixture.Finish();
    QCOMPARE(fixture.differences.selected(), 2);
  }
};
const RegisterTest<SnapshotsTest> register_snapshots_test;

}  // namespace

#include "snapshots_test.moc"
