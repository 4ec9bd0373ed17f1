#include "tests/core/core_test.h"

namespace {

class PageReadingTest : public QObject {
  Q_OBJECT
 private slots:
  void FailedLoadLeavesNoPagesAndSaysWhere() {
    ControllerFixture fixture;
    VarkelManager& manager = *fixture.manager;
    manager.InitConfigFileParser("../../no-model");
    QVERIFY(manager.level1List().isEmpty() && manager.pageModel(0) == nullptr && manager.myMap().isEmpty());
    QVERIFY(fixture.errors.isEmpty());  // nothing is connected to the signal yet at start-up
    const QString error = fixture.NextError();
    QVERIFY2(error.contains("no-model.csv"), qPrintable(error));
    QVERIFY(fixture.log.contains("ERROR " + error));
    manager.InitConfigFileParser();
    QVERIFY(!manager.level1List().isEmpty());
  }

  void EveryPageShowsWhatTheSensorHolds() {
    ControllerFixture fixture;
    fixture.sensor->SetValue("SN", "QU-TEST-1");
    fixture.sensor->SetValue("Gateway", "10.1.2.3");
    fixture.sensor->SetValue("Receiver Gain", "-7.25");
    QVERIFY(fixture.ConnectOn());
    int compared = 0;
    for (int page = 0; page < fixture.manager->level1List().size(); ++page) {
      QSignalSpy map_changed(fixture.manager.get(), &VarkelManager::myMapChanged);
      fixture.manager->GetLidarModuleInfo(page);
      QCOMPARE(map_changed.count(), 1);
      for (const QVariantMap& var : fixture.Variables(page)) {
        const QString name = var["var_name"].toString();
        if (var["get_cmd"].toString().isEmpty() || name == "Channel Field of View") continue;
        QCOMPARE(var["current_val"].toString().toStdString(), fixture.sensor->ValueText(name.toStdString()));
        ++compared;
      }
    }
    QVERIFY(compared > 70);
    QCOMPARE(fixture.manager->getLidarSN(), "QU-TEST-1");
    // One exchange for all variables that share a command and payload.
    QCOMPARE(fixture.sensor->Received(0x42).size(), 1U);
    const auto safety = fixture.sensor->Received(0x52);
    QCOMPARE(safety.size(), 1U);
    QCOMPARE(safety.front().payload, (std::vector<std::uint8_t>{0x01, 0x02}));
  }

  void LiveValuesChangeAndOthersDoNot() {
    ControllerFixture fixture;
    QSignalSpy rounds(fixture.manager.get(), &VarkelManager::myTimerMapChanged);
    QVERIFY(fixture.ConnectOn(1));
    QVERIFY(rounds.wait());
    const QString run_time = fixture.Shown("Run Time");
    fixture.sensor->SetValue("Start Count", "4711");  // on the same page and command, not live
    QTRY_VERIFY(fixture.Shown("Run Time") != run_time);
    QVERIFY(fixture.Shown("Start Count") != "4711");
    fixture.manager->GetLidarModuleInfo(1);
    QCOMPARE(fixture.Shown("Start Count"), "4711");
  }

  void ShortReplyIsReportedAndNothingElseChanges() {
    ControllerFixture fixture({"0x0C=lying-length:-4"});  // cuts into the last field
    QVERIFY(fixture.ConnectOn());
    fixture.sensor->SetValue("Calibration Date", "2031-01-01");
    const QString zero = fixture.Shown("Encoder Zero Position");
    QVERIFY(!fixture.manager->UpdateSingleVarInfo("Encoder Zero Position"));
    QCOMPARE(fixture.Shown("Encoder Zero Position"), zero);
    QCOMPARE(fixture.log.last(), "ERROR get var pos offset failed!");
    QVERIFY(fixture.manager->UpdateSingleVarInfo("Calibration Date"));
    QCOMPARE(fixture.Shown("Calibration Date"), "2031-01-01");
    QVERIFY(!fixture.manager->UpdateSingleVarInfo("no such variable"));
  }

  void NewestRequestInTheBackgroundWins() {
    ControllerFixture fixture({"0x07=late:300"});
    QVERIFY(fixture.ConnectOn());
    QSignalSpy finished(fixture.manager.get(), &VarkelManager::pageReadFinished);
    for (const int page : {0, 3, 4}) fixture.manager->ReadPageInBackground(page);
    QVERIFY(fixture.manager->isReadingPage());
    QTRY_COMPARE(finished.count(), 2);
    QCOMPARE(finished[0].first().toInt(), 0);
    QCOMPARE(finished[1].first().toInt(), 4);
    QVERIFY(!fixture.manager->isReadingPage());
  }

  void PageThatIsNotAnsweredIsLeftForTheNext() {
    ControllerFixture fixture({"0x07=error:9"});
    QVERIFY(fixture.ConnectOn());
    QSignalSpy finished(fixture.manager.get(), &VarkelManager::pageReadFinished);
    for (const int page : {0, 4}) fixture.manager->ReadPageInBackground(page);
    QTRY_COMPARE(finished.count(), 2);
    QCOMPARE(fixture.sensor->Received(0x0B).size(), 0U);
    fixture.manager->ReadPageInBackground(0);
    QTRY_COMPARE(finished.count(), 3);
    QCOMPARE(fixture.sensor->Received(0x0B).size(), 1U);
  }
};

const RegisterTest<PageReadingTest> register_page_reading_test;

}  // namespace

#include "page_reading_test.moc"
