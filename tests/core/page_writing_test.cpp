#include "tests/core/core_test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr char kSaved[] =
    "Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will need to "
    "restart "
    "the lidar for it to work.";

class PageWritingTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    bench_ = std::make_unique<Bench>();
    QVERIFY(bench_->ConnectOn());
  }

  void EditsAreCounted() {
    VarkelManager& manager = *bench_->manager;
    bench_->Edit("Intensity Threshold", bench_->Shown("Intensity Threshold"));
    QCOMPARE(manager.getSetMapSize(), 0);
    bench_->Edit("Intensity Threshold", "13");
    bench_->Edit("Noise Filter Level", "3");
    QCOMPARE(manager.getSetMapSize(), 1);  // one command carries both
    bench_->Edit("Operating Mode", "1", 3);
    QCOMPARE(bench_->Shown("Operating Mode"), "1");
    QCOMPARE(manager.getSetMapSize(), 2);
    manager.SetText(1, 99, 0, 0, "1");
    manager.SetText(1, 0, 0, -1, "1");
    QCOMPARE(manager.getSetMapSize(), 2);
    manager.ClearSetMap();
    QCOMPARE(manager.getSetMapSize(), 0);
  }

  void FaultyEditsAreReported() {
    const struct {
      const char* text;
      int type;
      const char* error;
    } cases[] = {{"3", 3, "Invalid switch value of type 3, please check the config file! name: Spin Rate"},
                 {"x", 3, "invalid stoi argument"},
                 {"1", 7, "Invalid switch value of type , please check the config file! name: Spin Rate"},
                 {"1", 2, "config file error, Please check the configuration of type 2 of Spin Rate"}};
    for (const auto& [text, type, error] : cases) {
      bench_->Edit("Spin Rate", text, type);
      QCOMPARE(bench_->NextError(), error);
    }
    QCOMPARE(bench_->manager->getSetMapSize(), 0);
  }

  void SaveCarriesEveryFieldAtItsPlace() {
    bench_->sensor->SetValue("Noise Filter Level", "-9");  // behind the user's back: must not be undone
    bench_->Edit("Intensity Threshold", "200");
    bench_->Edit("Detection Threshold", "126.5");
    bench_->manager->RunInBackground(4);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    const auto sent = bench_->sensor->Received(0x43);
    QCOMPARE(sent.size(), 1U);
    const Bytes expected = {0xC8,                                            // Intensity Threshold 200
                            0xF7,                                            // Noise Filter Level -9
                            0x3F, 0x00, 0x00, 0x00,                          // Minimum Range 0.5
                            0x43, 0x48, 0x00, 0x00,                          // Maximum Range 200
                            0xC0, 0x0C, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // Receiver Gain -3.5
                            0x00, 0xFD,               // Detection Threshold 126.5 / 0.5
                            0xFF, 0xEF,               // Reflectivity Offset -4.25 / 0.25
                            0x42, 0x8C, 0x00, 0x00,   // Pulse Energy Limit 35 / 0.5
                            0xFF, 0xFF, 0xFF, 0x06};  // Temperature Compensation -250
    QCOMPARE(sent.front().payload, expected);
    QCOMPARE(bench_->manager->getSetMapSize(), 0);
    QVERIFY(bench_->log.last().startsWith(
        "INFO Send KTC command [0x43] to set Intensity Threshold, Noise Filter Level, Minimum Range,"));
  }

  void SaveChangesNothingElse() {
    const auto values = [this] {
      QMap<QString, QString> texts;
      for (int page : {2, 3, 4, 5, 7}) {
        bench_->manager->GetLidarModuleInfo(page);
        for (const QVariantMap& var : bench_->Variables(page)) {
          texts[var["var_name"].toString()] = var["current_val"].toString();
        }
      }
      return texts;
    };
    auto expected = values();
    bench_->Edit("UTC Offset", expected["UTC Offset"] = "-3600");
    bench_->Edit("PTP Profile", expected["PTP Profile"] = "2", 3);
    bench_->Edit("PTP Time Correction", expected["PTP Time Correction"] = "12");
    bench_->manager->Run(3);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    QCOMPARE(values(), expected);
  }

  void AddressesGoLastAndNeedNoAnswer() {
    bench_->sensor->Misbehave("0x21=close:0");  // a sensor that moved to its new address is gone
    bench_->Edit("Sensor IP", "192.168.1.77");
    bench_->Edit("Destination Port", "3000");
    bench_->Edit("VLAN ID", "7");
    bench_->sensor->ClearReceived();
    bench_->manager->Run(2);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    QVERIFY(bench_->errors.isEmpty());
    Bytes set_commands;
    for (const auto& request : bench_->sensor->Received()) {
      if (request.command >= 0x20) set_commands.push_back(request.command);
    }
    QCOMPARE(set_commands, (Bytes{0x20, 0x24, 0x21}));
  }

  void RefusalKeepsTheEdits() {
    bench_->sensor->Misbehave("0x45=error:5");
    bench_->Edit("Operating Mode", "1", 3);  // 0x41, ahead of the refused command
    bench_->Edit("Sync Angle", "180");       // 0x45
    bench_->Edit("Minimum Range", "1");      // 0x43, behind it
    bench_->Edit("UTC Offset", "5");         // another page's
    bench_->manager->Run(4);
    QCOMPARE(bench_->NextError(), "SET [0x45] FAILED");
    QCOMPARE(bench_->NextError(), "Set Failed: 0x45 SET  ret_code: 5");
    QVERIFY(bench_->successes.isEmpty());
    QCOMPARE(bench_->sensor->ValueText("Operating Mode"), std::string("1"));
    QVERIFY(bench_->sensor->Received(0x43).empty());
    QCOMPARE(bench_->manager->getSetMapSize(), 4);
    QCOMPARE(bench_->Shown("Sync Angle"), "180");
    bench_->sensor->Behave();
    bench_->manager->Run(4);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    QCOMPARE(bench_->sensor->ValueText("Sync Angle"), std::string("180"));
    QCOMPARE(bench_->manager->getSetMapSize(), 1);
    bench_->manager->GetLidarModuleInfo(3);
    QCOMPARE(bench_->Shown("UTC Offset"), "5");
  }

  void FourByteCommandsAndSwitches() {
    bench_->Edit("Heartbeat Period", "0", 2);  // the row's switch
    bench_->Edit("Heartbeat Period", "0");
    bench_->manager->Run(7);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    QCOMPARE(bench_->sensor->ValueText("Heartbeat Enabled"), std::string("0"));
    QCOMPARE(bench_->sensor->ValueText("Heartbeat Period"), std::string("0"));
    QCOMPARE(bench_->sensor->ValueText("Watchdog Time-Out"), std::string("2000"));
    Bytes sent = bench_->sensor->Received(0xFF).back().payload;
    sent.resize(4);
    QCOMPARE(sent, (Bytes{0x01, 0x00, 0x01, 0x02}));
  }

  void FieldOfViewIsReadAndWritten() {
    QSignalSpy fov_changed(bench_->manager.get(), &VarkelManager::fovConfigChanged);
    for (const char* bad : {"x", "360.1", "-1", "nan"}) {
      bench_->manager->SetMultiFovConfig(0, bad);
      QCOMPARE(bench_->NextError(), "Input value of fov is invalid");
    }
    QCOMPARE(fov_changed.count(), 4);
    bench_->manager->SetMultiFovConfig(10, "5");
    QCOMPARE(bench_->manager->getSetMapSize(), 0);
    bench_->manager->SetMultiFovConfig(1, "45.5");
    QCOMPARE(bench_->manager->FovList()[1], "45.5");
    bench_->Edit("Channel Field of View", "2", 3);
    bench_->manager->Run(5);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    const auto sent = bench_->sensor->Received(0x22);
    QCOMPARE(sent.size(), 1U);
    QCOMPARE(sent.front().payload.size(), 11U);
    QCOMPARE(sent.front().payload[0], std::uint8_t{2});
    QCOMPARE(sent.front().payload[3] * 256 + sent.front().payload[4], 455);
    bench_->sensor->Misbehave("0x22=error:1");
    bench_->manager->SetMultiFovConfig(1, "46");
    bench_->manager->Run(5);
    QCOMPARE(bench_->NextError(), "Set Failed: set channel fov failed");
    bench_->manager->Stop();
    QCOMPARE(bench_->manager->FovList()[1], "0.0");
    QVERIFY(bench_->ConnectOn());
    fov_changed.clear();
    bench_->manager->GetLidarModuleInfo(5);
    QCOMPARE(fov_changed.count(), 1);
    QCOMPARE(bench_->manager->FovList()[1], "45.5");
  }

  void RefusedBeforeAnythingIsSent() {
    const auto refusal = [this](const char* text) {
      bench_->Edit("Sync Angle", text);
      bench_->manager->Run(4);
      return bench_->NextError();
    };
    bench_->manager->setIsDownloadLog(true);
    QCOMPARE(refusal("180"), "Please wait for the operation log to download completely");
    bench_->manager->setIsDownloadLog(false);
    QCOMPARE(refusal("many"), "Set Failed: UintParser: contains an illegal number, error:many");
    QCOMPARE(refusal(""),
             "Set Failed: Unknown error with this var: It has no current_val. var_name = Sync Angle");
    bench_->manager->Run(99);
    QVERIFY(bench_->errors.isEmpty());
    bench_->manager->Stop();
    QCOMPARE(refusal("180"), "Please connect to lidar first");
    QVERIFY(bench_->sensor->Received(0x45).empty());
  }

  void EditMadeDuringTheSaveStaysPending() {
    bench_->sensor->Misbehave("0x43=late:500");
    bench_->Edit("Intensity Threshold", "20");
    bench_->Edit("Noise Filter Level", "3");
    bench_->manager->RunInBackground(4);
    QVERIFY(bench_->sensor->WaitReceived(0x43, 1, std::chrono::seconds(5)));
    bench_->Edit("Intensity Threshold", "21");
    QCOMPARE(bench_->NextSuccess(), kSaved);
    const auto edited = [this](const char* name) {
      const auto place = bench_->Find(name);
      return bench_->manager->variableMap(place.page, place.group, place.index)["edited"].toBool();
    };
    QVERIFY(edited("Intensity Threshold"));
    QVERIFY(!edited("Noise Filter Level"));
    QCOMPARE(bench_->manager->getSetMapSize(), 1);
    bench_->manager->Run(4);
    QCOMPARE(bench_->NextSuccess(), kSaved);
    QCOMPARE(bench_->sensor->ValueText("Intensity Threshold"), std::string("21"));
  }

 private:
  std::unique_ptr<Bench> bench_;
};

const RegisterTest<PageWritingTest> registered;

}  // namespace

#include "page_writing_test.moc"
