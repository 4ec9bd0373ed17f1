#include "tests/core/core_test.h"

namespace {

class PageReadingTest : public QObject {
  Q_OBJECT
 private slots:
  void FailedLoadLeavesNoPagesAndSaysWhere() {
    Bench bench;
    bench.manager->InitConfigFileParser("../../no-model");
    QVERIFY(bench.manager->level1List().isEmpty() && bench.manager->pageModel(0) == nullptr);
    QVERIFY(bench.manager->myMap().isEmpty());
    QVERIFY(bench.errors.isEmpty());  // at the start nobody would hear it yet
    const QString error = bench.NextError();
    QVERIFY2(error.contains("no-model.csv"), qPrintable(error));
    QVERIFY(bench.log.contains("ERROR " + error));
    bench.manager->InitConfigFileParser();
    QVERIFY(!bench.manager->level1List().isEmpty());
  }

  void EveryPageShowsWhatTheSensorHolds() {
    Bench bench;
    bench.sensor->SetValue("SN", "QU-TEST-1");
    bench.sensor->SetValue("Gateway", "10.1.2.3");
    bench.sensor->SetValue("Receiver Gain", "-7.25");
    QVERIFY(bench.ConnectOn());
    int compared = 0;
    for (int page = 0; page < bench.manager->level1List().size(); ++page) {
      QSignalSpy map_changed(bench.manager.get(), &VarkelManager::myMapChanged);
      bench.manager->GetLidarModuleInfo(page);
      QCOMPARE(map_changed.count(), 1);
      for (const QVariantMap& var : bench.Variables(page)) {
        const QString name = var["var_name"].toString();
        if (var["get_cmd"].toString().isEmpty() || name == "Channel Field of View") continue;
        QCOMPARE(var["current_val"].toString().toStdString(), bench.sensor->ValueText(name.toStdString()));
        ++compared;
      }
    }
    QVERIFY(compared > 70);
    QCOMPARE(bench.manager->getLidarSN(), "QU-TEST-1");
    // One exchange for all variables that share a command and payload.
    QCOMPARE(bench.sensor->Received(0x42).size(), 1U);
    const auto safety = bench.sensor->Received(0x52);
    QCOMPARE(safety.size(), 1U);
    QCOMPARE(safety.front().payload, (std::vector<std::uint8_t>{0x01, 0x02}));
  }

  void LiveValuesMoveAndOthersAreLeftAlone() {
    Bench bench;
    QSignalSpy rounds(bench.manager.get(), &VarkelManager::myTimerMapChanged);
    QVERIFY(bench.ConnectOn(1));
    QVERIFY(rounds.wait());
    const QString run_time = bench.Shown("Run Time");
    bench.sensor->SetValue("Start Count", "4711");  // on the same page and command, not live
    QTRY_VERIFY(bench.Shown("Run Time") != run_time);
    QVERIFY(bench.Shown("Start Count") != "4711");
    bench.manager->GetLidarModuleInfo(1);
    QCOMPARE(bench.Shown("Start Count"), "4711");
  }

  void PageWithoutLiveValuesIsNotRefreshed() {
    Bench bench;
    QSignalSpy rounds(bench.manager.get(), &VarkelManager::myTimerMapChanged);
    QVERIFY(bench.ConnectOn(2));
    const std::size_t exchanges = bench.sensor->exchanges();
    QVERIFY(!rounds.wait(400));
    QCOMPARE(bench.sensor->exchanges(), exchanges);
  }

  void RefusedCommandLeavesTheOtherRows() {
    Bench bench({"0x0B=error:9"});
    bench.sensor->SetValue("SN", "QU-TEST-2");
    QVERIFY(bench.ConnectOn());
    bench.manager->GetLidarModuleInfo(0);
    QCOMPARE(bench.Shown("SN"), "QU-TEST-2");
    QVERIFY(bench.errors.isEmpty());  // no read failure disturbs the user
  }

  void ShortReplyIsReportedAndNothingElseChanges() {
    Bench bench({"0x0C=lying-length:-4"});  // cuts into the last field
    QVERIFY(bench.ConnectOn());
    bench.sensor->SetValue("Calibration Date", "2031-01-01");
    const QString zero = bench.Shown("Encoder Zero Position");
    QVERIFY(!bench.manager->UpdateSingleVarInfo("Encoder Zero Position"));
    QCOMPARE(bench.Shown("Encoder Zero Position"), zero);
    QCOMPARE(bench.log.last(), "ERROR get var pos offset failed!");
    QVERIFY(bench.manager->UpdateSingleVarInfo("Calibration Date"));
    QCOMPARE(bench.Shown("Calibration Date"), "2031-01-01");
    QVERIFY(!bench.manager->UpdateSingleVarInfo("no such variable"));
  }

  void NewestRequestInTheBackgroundWins() {
    Bench bench({"0x07=late:300"});
    QVERIFY(bench.ConnectOn());
    QSignalSpy finished(bench.manager.get(), &VarkelManager::pageReadFinished);
    for (const int page : {0, 3, 4}) bench.manager->ReadPageInBackground(page);
    QVERIFY(bench.manager->isReadingPage());
    QTRY_COMPARE(finished.count(), 2);
    QCOMPARE(finished[0].first().toInt(), 0);
    QCOMPARE(finished[1].first().toInt(), 4);
    QVERIFY(!bench.manager->isReadingPage());
  }

  void PageThatIsNotAnsweredIsLeftForTheNext() {
    Bench bench({"0x07=error:9"});
    QVERIFY(bench.ConnectOn());
    QSignalSpy finished(bench.manager.get(), &VarkelManager::pageReadFinished);
    for (const int page : {0, 4}) bench.manager->ReadPageInBackground(page);
    QTRY_COMPARE(finished.count(), 2);
    QCOMPARE(bench.sensor->Received(0x0B).size(), 0U);
    bench.manager->ReadPageInBackground(0);
    QTRY_COMPARE(finished.count(), 3);
    QCOMPARE(bench.sensor->Received(0x0B).size(), 1U);
  }
};

const RegisterTest<PageReadingTest> registered;

}  // namespace

#include "page_reading_test.moc"
