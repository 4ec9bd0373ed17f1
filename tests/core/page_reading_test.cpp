#include <QTest>

#include "tests/core/core_test.h"

namespace {

class PageReadingTest : public QObject {
  Q_OBJECT
 private slots:
  void EveryPageShowsWhatTheSensorHolds();
  void LiveValuesMoveAndOthersAreLeftAlone();
  void PageWithoutLiveValuesIsNotRefreshed();
  void RefusedCommandLeavesTheOtherRows();
  void ShortReplyIsReportedAndNothingElseChanges();
  void FieldOfViewIsRead();
  void NewestRequestInTheBackgroundWins();
  void EditsSurviveEveryRefresh();
};

void PageReadingTest::EveryPageShowsWhatTheSensorHolds() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);  // no refresh, so that the sensor's clock alone moves values
  for (const char* name : {"SN", "Gateway", "PTP Domain", "Receiver Gain", "Over-Temperature Limit"}) {
    bench.sensor->SetValue(name, name == std::string("SN")              ? "QU-TEST-1"
                                 : name == std::string("Gateway")       ? "10.1.2.3"
                                 : name == std::string("Receiver Gain") ? "-7.25"
                                                                        : "99");
  }
  QVERIFY(bench.Connect());
  int compared = 0;
  for (int page = 0; page < bench.manager->level1List().size(); ++page) {
    QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
    bench.manager->GetLidarModuleInfo(page);
    QCOMPARE(map_changed.count(), 1);
    for (const QVariant& group : bench.manager->myMap()[page].toList()) {
      for (const QVariant& item : group.toList()) {
        const QVariantMap var = item.toMap();
        const QString name = var["var_name"].toString();
        if (var["get_cmd"].toString().isEmpty() || name == "Channel Field of View") continue;
        const auto place = bench.Find(name);
        if (bench.manager->isTimerUpdate(place.page, place.group, place.index)) continue;
        QCOMPARE(var["current_val"].toString(),
                 QString::fromStdString(bench.sensor->ValueText(name.toStdString())));
        ++compared;
      }
    }
  }
  QVERIFY(compared > 70);
  QCOMPARE(bench.manager->getLidarSN(), QString("QU-TEST-1"));
  // One exchange for all variables that share a command and payload.
  QCOMPARE(bench.sensor->Received(0x42).size(), std::size_t{1});
  const auto safety = bench.sensor->Received(0x52);
  QCOMPARE(safety.size(), std::size_t{1});
  QCOMPARE(safety.front().payload, (std::vector<std::uint8_t>{0x01, 0x02}));
}

void PageReadingTest::LiveValuesMoveAndOthersAreLeftAlone() {
  Bench bench;
  bench.manager->setModuleIndexUse(1);
  QSignalSpy timer_changed(bench.manager.get(), &VarkelManager::myTimerMapChanged);
  QVERIFY(bench.Connect());
  QVERIFY(timer_changed.wait());
  const QString run_time = bench.Shown("Run Time");
  bench.sensor->SetValue("Start Count", "4711");  // on the same page and command, not live
  QTRY_VERIFY(bench.Shown("Run Time") != run_time);
  QVERIFY(bench.Shown("Start Count") != "4711");
  bench.manager->GetLidarModuleInfo(1);
  QCOMPARE(bench.Shown("Start Count"), QString("4711"));
}

void PageReadingTest::PageWithoutLiveValuesIsNotRefreshed() {
  Bench bench;
  bench.manager->setModuleIndexUse(2);
  QSignalSpy timer_changed(bench.manager.get(), &VarkelManager::myTimerMapChanged);
  QVERIFY(bench.Connect());
  const std::size_t exchanges = bench.sensor->exchanges();
  QVERIFY(!timer_changed.wait(400));
  QCOMPARE(bench.sensor->exchanges(), exchanges);
}

void PageReadingTest::RefusedCommandLeavesTheOtherRows() {
  Bench bench({"0x0B=error:9"});
  bench.manager->setModuleIndexUse(-1);
  bench.sensor->SetValue("Hardware Version", "OTHER 1.2.3.4 (5)");
  bench.sensor->SetValue("SN", "QU-TEST-2");
  QVERIFY(bench.Connect());
  const QString before = bench.Shown("Hardware Version");
  bench.manager->GetLidarModuleInfo(0);
  QCOMPARE(bench.Shown("Hardware Version"), before);
  QCOMPARE(bench.Shown("SN"), QString("QU-TEST-2"));
  QVERIFY(bench.errors.isEmpty());  // no read failure disturbs the user
  QVERIFY(bench.manager->IsConnected());
}

void PageReadingTest::ShortReplyIsReportedAndNothingElseChanges() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.sensor->SetValue("Calibration Date", "2031-01-01");
  bench.sensor->Misbehave("0x0C=lying-length:-4");  // cuts into the last field
  const QString zero = bench.Shown("Encoder Zero Position");
  QVERIFY(!bench.manager->UpdateSingleVarInfo("Encoder Zero Position"));
  QCOMPARE(bench.Shown("Encoder Zero Position"), zero);
  QCOMPARE(bench.log.last(), QString("ERROR get var pos offset failed!"));
  QVERIFY(bench.manager->UpdateSingleVarInfo("Calibration Date"));
  QCOMPARE(bench.Shown("Calibration Date"), QString("2031-01-01"));
  QVERIFY(!bench.manager->UpdateSingleVarInfo("no such variable"));
}

void PageReadingTest::FieldOfViewIsRead() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  QSignalSpy fov_changed(bench.manager.get(), &VarkelManager::fovConfigChanged);
  bench.manager->GetLidarModuleInfo(5);
  QCOMPARE(fov_changed.count(), 1);
  QCOMPARE(bench.manager->FovList().size(), 10);
  bench.manager->Stop();
  for (int i = 0; i < 4; ++i) QCOMPARE(bench.manager->FovList()[i].toString(), QString("0.0"));
}

void PageReadingTest::NewestRequestInTheBackgroundWins() {
  Bench bench({"0x07=late:300"});
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  QSignalSpy finished(bench.manager.get(), &VarkelManager::pageReadFinished);
  bench.manager->ReadPageInBackground(0);
  QVERIFY(bench.manager->isReadingPage());
  bench.manager->ReadPageInBackground(3);
  bench.manager->ReadPageInBackground(4);
  QTRY_COMPARE(finished.count(), 2);
  QCOMPARE(finished[0].first().toInt(), 0);
  QCOMPARE(finished[1].first().toInt(), 4);
  QVERIFY(!bench.manager->isReadingPage());
}

void PageReadingTest::EditsSurviveEveryRefresh() {
  Bench bench;
  bench.manager->setModuleIndexUse(4);
  QVERIFY(bench.Connect());
  bench.Edit("Intensity Threshold", "77");
  bench.sensor->SetValue("Noise Filter Level", "5");
  bench.manager->GetLidarModuleInfo(4);
  QCOMPARE(bench.Shown("Intensity Threshold"), QString("77"));
  QCOMPARE(bench.Shown("Noise Filter Level"), QString("5"));
  bench.manager->ClearSetMap();
  bench.manager->GetLidarModuleInfo(4);
  QCOMPARE(bench.Shown("Intensity Threshold"), QString("12"));
}

const RegisterTest<PageReadingTest> registered;

}  // namespace

#include "page_reading_test.moc"
