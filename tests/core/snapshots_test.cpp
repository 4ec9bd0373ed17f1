#include "VarkelCore/src/snapshots/snapshots.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QUrl>

#include "tests/core/core_test.h"

namespace {

using varkel::DifferenceList;
using varkel::Snapshots;

/// A connected controller that has compared a snapshot with the sensor, which has changed since.
struct Rig : ControllerFixture {
  Rig() {
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
    Rig rig;
    QVERIFY(rig.Plan());
    rig.sensor->SetValue("Spin Rate", "300");
    rig.snapshots.apply();
    QVERIFY(rig.NextError().startsWith("The sensor has changed since this was planned"));
    rig.Finish();
    rig.snapshots.apply();
    QVERIFY(rig.NextError().contains("nothing was written"));
    QCOMPARE(rig.sensor->ValueText("Spin Rate"), std::string("300"));
    QVERIFY(rig.Plan());
    rig.snapshots.apply();
    rig.Finish();
    QCOMPARE(rig.sensor->ValueText("Spin Rate"), std::string("600"));
    rig.differences.selectAll(true);
    QVERIFY(!rig.Plan());
    QCOMPARE(rig.snapshots.outcome(), QString("Nothing to write: the sensor already holds these values."));
  }

  void ADisconnectEndsItAtOnce() {
    Rig rig;
    QVERIFY(rig.Plan());
    rig.AddFault("0x41=silence");
    rig.snapshots.apply();
    QVERIFY(rig.Wait([&] { return !rig.sensor->Received(0x41).empty(); }));
    rig.manager->RunInBackground(0);
    QCOMPARE(rig.NextError(), QString("Please wait until the snapshot has been applied"));
    QElapsedTimer timer;
    timer.start();
    rig.manager->Stop();
    rig.Finish();
    QVERIFY(timer.elapsed() < 1000);
    QVERIFY(!rig.snapshots.is_applying());
    QVERIFY(rig.snapshots.outcome().contains("1 sent, not confirmed, 1 not sent"));
    QVERIFY(rig.NextError().startsWith("Stopped"));
    rig.snapshots.plan();
    QCOMPARE(rig.NextError(), QString("Please connect to lidar first"));
  }

  void ALostConnectionIsReported() {
    Rig rig;
    QVERIFY(rig.Plan());
    rig.AddFault("0x41=close:0");
    rig.snapshots.apply();
    QVERIFY(rig.NextError().startsWith("The connection was lost"));
    rig.Finish();
    QCOMPARE(rig.differences.selected(), 2);
  }
};
const RegisterTest<SnapshotsTest> register_snapshots_test;

}  // namespace

#include "snapshots_test.moc"
