#include <QTest>

#include "tests/core/core_test.h"

namespace {

constexpr char kSaved[] =
    "Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will need to "
    "restart "
    "the lidar for it to work.";

class PageWritingTest : public QObject {
  Q_OBJECT
 private slots:
  void EditsAreCounted();
  void FaultyEditsAreReported();
  void SaveCarriesEveryFieldAtItsPlace();
  void SaveChangesNothingElse();
  void AddressesGoLastAndNeedNoAnswer();
  void RefusalKeepsTheEdits();
  void FourByteCommandsAndSwitches();
  void FieldOfViewIsWritten();
  void RefusedBeforeAnythingIsSent();
  void EditsOfOtherPagesStayPending();
  void EditMadeDuringTheSaveStaysPending();
};

void PageWritingTest::EditsAreCounted() {
  Bench bench;
  VarkelManager& manager = *bench.manager;
  bench.Edit("Intensity Threshold", bench.Shown("Intensity Threshold"));
  QCOMPARE(manager.getSetMapSize(), 0);
  bench.Edit("Intensity Threshold", "13");
  bench.Edit("Noise Filter Level", "3");
  QCOMPARE(manager.getSetMapSize(), 1);  // one command carries both
  bench.Edit("Operating Mode", "1", 3);
  QCOMPARE(bench.Shown("Operating Mode"), QString("1"));
  QCOMPARE(manager.getSetMapSize(), 2);
  manager.SetText(1, 99, 0, 0, "1");
  manager.SetText(1, 0, 0, -1, "1");
  QCOMPARE(manager.getSetMapSize(), 2);
  manager.ClearSetMap();
  QCOMPARE(manager.getSetMapSize(), 0);
}

void PageWritingTest::FaultyEditsAreReported() {
  Bench bench;
  bench.Edit("Spin Rate", "3", 3);
  QCOMPARE(bench.NextError(),
           QString("Invalid switch value of type 3, please check the config file! name: Spin Rate"));
  bench.Edit("Spin Rate", "x", 3);
  QCOMPARE(bench.NextError(), QString("invalid stoi argument"));
  bench.Edit("Spin Rate", "1", 7);
  QCOMPARE(bench.NextError(),
           QString("Invalid switch value of type , please check the config file! name: Spin Rate"));
  bench.Edit("Spin Rate", "1", 2);
  QCOMPARE(bench.NextError(),
           QString("config file error, Please check the configuration of type 2 of Spin Rate"));
  QCOMPARE(bench.manager->getSetMapSize(), 0);
}

void PageWritingTest::SaveCarriesEveryFieldAtItsPlace() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.sensor->SetValue("Noise Filter Level", "-9");  // changed behind the user's back: must not be undone
  bench.Edit("Intensity Threshold", "200");
  bench.Edit("Detection Threshold", "126.5");
  bench.manager->RunInBackground(4);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  const auto sent = bench.sensor->Received(0x43);
  QCOMPARE(sent.size(), std::size_t{1});
  const std::vector<std::uint8_t> expected = {0xC8,                    // Intensity Threshold 200
                                              0xF7,                    // Noise Filter Level -9
                                              0x3F, 0x00, 0x00, 0x00,  // Minimum Range 0.5
                                              0x43, 0x48, 0x00, 0x00,  // Maximum Range 200
                                              0xC0, 0x0C, 0x00, 0x00,
                                              0x00, 0x00, 0x00, 0x00,   // Receiver Gain -3.5
                                              0x00, 0xFD,               // Detection Threshold 126.5 / 0.5
                                              0xFF, 0xEF,               // Reflectivity Offset -4.25 / 0.25
                                              0x42, 0x8C, 0x00, 0x00,   // Pulse Energy Limit 35 / 0.5
                                              0xFF, 0xFF, 0xFF, 0x06};  // Temperature Compensation -250
  QCOMPARE(sent.front().payload, expected);
  QCOMPARE(bench.manager->getSetMapSize(), 0);
  QVERIFY(bench.log.last().startsWith(
      "INFO Send KTC command [0x43] to set Intensity Threshold, Noise Filter Level, Minimum Range,"));
}

void PageWritingTest::SaveChangesNothingElse() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  QMap<QString, QString> before;
  const auto values = [&bench] {
    QMap<QString, QString> texts;
    for (int page : {2, 3, 4, 5, 7}) {
      bench.manager->GetLidarModuleInfo(page);
      for (const QVariant& group : bench.manager->myMap()[page].toList()) {
        for (const QVariant& var : group.toList()) {
          const QString name = var.toMap()["var_name"].toString();
          const auto place = bench.Find(name);
          if (!bench.manager->isTimerUpdate(place.page, place.group, place.index)) {
            texts[name] = var.toMap()["current_val"].toString();
          }
        }
      }
    }
    return texts;
  };
  before = values();
  bench.Edit("UTC Offset", "-3600");
  bench.Edit("PTP Profile", "2", 3);
  bench.Edit("PTP Time Correction", "12");
  bench.manager->Run(3);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  auto expected = before;
  expected["UTC Offset"] = "-3600";
  expected["PTP Profile"] = "2";
  expected["PTP Time Correction"] = "12";
  QCOMPARE(values(), expected);
}

void PageWritingTest::AddressesGoLastAndNeedNoAnswer() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.sensor->Misbehave("0x21=close:0");  // a sensor that moved to its new address is gone
  bench.Edit("Sensor IP", "192.168.1.77");
  bench.Edit("Destination Port", "3000");
  bench.Edit("VLAN ID", "7");
  bench.sensor->ClearReceived();
  bench.manager->Run(2);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  QVERIFY(bench.errors.isEmpty());
  std::vector<std::uint8_t> set_commands;
  for (const auto& request : bench.sensor->Received()) {
    if (request.command >= 0x20) set_commands.push_back(request.command);
  }
  QCOMPARE(set_commands, (std::vector<std::uint8_t>{0x20, 0x24, 0x21}));
}

void PageWritingTest::RefusalKeepsTheEdits() {
  Bench bench({"0x45=error:5"});
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.Edit("Operating Mode", "1", 3);  // 0x41, ahead of the refused command
  bench.Edit("Sync Angle", "180");       // 0x45
  bench.Edit("Minimum Range", "1");      // 0x43, behind it
  bench.manager->Run(4);
  QCOMPARE(bench.NextError(), QString("SET [0x45] FAILED"));
  QCOMPARE(bench.NextError(), QString("Set Failed: 0x45 SET  ret_code: 5"));
  QVERIFY(bench.successes.isEmpty());
  QCOMPARE(bench.sensor->ValueText("Operating Mode"), std::string("1"));
  QVERIFY(bench.sensor->Received(0x43).empty());
  QCOMPARE(bench.manager->getSetMapSize(), 3);
  QCOMPARE(bench.Shown("Sync Angle"), QString("180"));
  bench.sensor->Behave();
  bench.manager->Run(4);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  QCOMPARE(bench.sensor->ValueText("Sync Angle"), std::string("180"));
}

void PageWritingTest::FourByteCommandsAndSwitches() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.Edit("Heartbeat Period", "0", 2);  // the row's switch
  bench.Edit("Heartbeat Period", "0");
  bench.manager->Run(7);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  QCOMPARE(bench.sensor->ValueText("Heartbeat Enabled"), std::string("0"));
  QCOMPARE(bench.sensor->ValueText("Heartbeat Period"), std::string("0"));
  QCOMPARE(bench.sensor->ValueText("Watchdog Time-Out"), std::string("2000"));
  const auto sent = bench.sensor->Received(0xFF).back();
  QCOMPARE((std::vector<std::uint8_t>(sent.payload.begin(), sent.payload.begin() + 4)),
           (std::vector<std::uint8_t>{0x01, 0x00, 0x01, 0x02}));
}

void PageWritingTest::FieldOfViewIsWritten() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  QSignalSpy fov_changed(bench.manager.get(), &VarkelManager::fovConfigChanged);
  for (const char* bad : {"x", "360.1", "-1", "nan"}) {
    bench.manager->SetMultiFovConfig(0, bad);
    QCOMPARE(bench.NextError(), QString("Input value of fov is invalid"));
  }
  QCOMPARE(fov_changed.count(), 4);
  QCOMPARE(bench.manager->getSetMapSize(), 0);
  bench.manager->SetMultiFovConfig(10, "5");
  QCOMPARE(bench.manager->getSetMapSize(), 0);
  bench.manager->SetMultiFovConfig(1, "45.5");
  QCOMPARE(bench.manager->FovList()[1].toString(), QString("45.5"));
  bench.Edit("Channel Field of View", "2", 3);
  bench.manager->Run(5);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  const auto sent = bench.sensor->Received(0x22);
  QCOMPARE(sent.size(), std::size_t{1});
  QCOMPARE(sent.front().payload.size(), std::size_t{11});
  QCOMPARE(sent.front().payload[0], std::uint8_t{2});
  QCOMPARE(sent.front().payload[3] * 256 + sent.front().payload[4], 455);

  bench.sensor->Misbehave("0x22=error:1");
  bench.manager->SetMultiFovConfig(1, "46");
  bench.manager->Run(5);
  QCOMPARE(bench.NextError(), QString("Set Failed: set channel fov failed"));
}

void PageWritingTest::RefusedBeforeAnythingIsSent() {
  Bench bench;
  bench.Edit("Sync Angle", "180");
  bench.manager->Run(4);
  QCOMPARE(bench.NextError(), QString("Please connect to lidar first"));
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.manager->setIsDownloadLog(true);
  bench.manager->Run(4);
  QCOMPARE(bench.NextError(), QString("Please wait for the operation log to download completely"));
  bench.manager->setIsDownloadLog(false);
  bench.Edit("Sync Angle", "many");
  bench.manager->Run(4);
  QCOMPARE(bench.NextError(), QString("Set Failed: UintParser: contains an illegal number, error:many"));
  bench.Edit("Sync Angle", "");
  bench.manager->Run(4);
  QCOMPARE(bench.NextError(),
           QString("Set Failed: Unknown error with this var: It has no current_val. var_name = Sync Angle"));
  QVERIFY(bench.sensor->Received(0x45).empty());
  bench.manager->Run(99);
  QVERIFY(bench.errors.isEmpty());
}

void PageWritingTest::EditsOfOtherPagesStayPending() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.Edit("Sync Angle", "180");
  bench.Edit("UTC Offset", "5");
  bench.manager->Run(3);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  QCOMPARE(bench.manager->getSetMapSize(), 1);
  bench.manager->GetLidarModuleInfo(4);
  QCOMPARE(bench.Shown("Sync Angle"), QString("180"));
}

void PageWritingTest::EditMadeDuringTheSaveStaysPending() {
  Bench bench;
  bench.manager->setModuleIndexUse(-1);
  QVERIFY(bench.Connect());
  bench.sensor->Misbehave("0x43=late:500");
  bench.Edit("Intensity Threshold", "20");
  bench.Edit("Noise Filter Level", "3");
  bench.manager->RunInBackground(4);
  QVERIFY(bench.sensor->WaitReceived(0x43, 1, std::chrono::seconds(5)));
  bench.Edit("Intensity Threshold", "21");
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  const auto edited = [&bench](const char* name) {
    const auto place = bench.Find(name);
    return bench.manager->variableMap(place.page, place.group, place.index)["edited"].toBool();
  };
  QVERIFY(edited("Intensity Threshold"));
  QVERIFY(!edited("Noise Filter Level"));
  QCOMPARE(bench.manager->getSetMapSize(), 1);
  bench.manager->Run(4);
  QCOMPARE(bench.NextSuccess(), QString(kSaved));
  QCOMPARE(bench.sensor->ValueText("Intensity Threshold"), std::string("21"));
}

const RegisterTest<PageWritingTest> registered;

}  // namespace

#include "page_writing_test.moc"
