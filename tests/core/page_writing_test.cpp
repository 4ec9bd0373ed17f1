#include <QRegularExpression>
#include "tests/core/core_test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr char kSaved[] =
    "Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will need to "
    "restart the lidar for it to work.";

class PageWritingTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    fixture_ = std::make_unique<ControllerFixture>();
    QVERIFY(fixture_->ConnectOn());
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
      fixture_->Edit("Spin Rate", text, type);
      QCOMPARE(fixture_->NextError(), error);
    }
    QCOMPARE(fixture_->manager->getSetMapSize(), 0);
  }

  void SaveSendsEveryFieldAtItsOffset() {
    fixture_->sensor->SetValue("Noise Filter Level",
                               "-9");  // without the user's knowledge: must not be undone
    fixture_->Edit("Intensity Threshold", "200");
    fixture_->Edit("Detection Threshold", "126.5");
    QVERIFY(Saves(4));
    const Bytes expected = {0xC8,                                            // Intensity Threshold 200
                            0xF7,                                            // Noise Filter Level -9
                            0x3F, 0x00, 0x00, 0x00,                          // Minimum Range 0.5
                            0x43, 0x48, 0x00, 0x00,                          // Maximum Range 200
                            0xC0, 0x0C, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // Receiver Gain -3.5
                            0x00, 0xFD,               // Detection Threshold 126.5 / 0.5
                            0xFF, 0xEF,               // Reflectivity Offset -4.25 / 0.25
                            0x42, 0x8C, 0x00, 0x00,   // Pulse Energy Limit 35 / 0.5
                            0xFF, 0xFF, 0xFF, 0x06};  // Temperature Compensation -250
    QCOMPARE(Sent(0x43), expected);
    QCOMPARE(fixture_->manager->getSetMapSize(), 0);
    QVERIFY(fixture_->log.last().startsWith(
        "INFO Send KTC command [0x43] to set Intensity Threshold, Noise Filter Level, Minimum Range,"));
  }

  void AddressesGoLastAndNeedNoAnswer() {
    fixture_->AddFault("0x21=close:0");  // a sensor that moved to its new address is gone
    fixture_->Edit("Sensor IP", "192.168.1.77");
    fixture_->Edit("Destination Port", "3000");
    fixture_->Edit("VLAN ID", "7");
    fixture_->sensor->ClearReceived();
    QVERIFY(Saves(2));
    Bytes set_commands;
    for (const auto& request : fixture_->sensor->Received()) {
      if (request.command >= 0x20) set_commands.push_back(request.command);
    }
    QCOMPARE(set_commands, (Bytes{0x20, 0x24, 0x21}));
  }

  void AddressesThatCouldNotGoOutAreNotSaved() {
    fixture_->AddFault("0x08=close:0");  // breaks the connection in the refresh
    fixture_->Edit("Sensor IP", "192.168.1.77");
    QVERIFY(!Saves(2));
    QVERIFY(fixture_->errors.contains("SET [0x21] FAILED"));
    QVERIFY(fixture_->successes.isEmpty());
    QVERIFY(fixture_->sensor->Received(0x21).empty());
    QVERIFY(fixture_->IsEdited("Sensor IP"));
  }

  void RefusalKeepsTheEdits() {
    fixture_->AddFault("0x45=error:5");
    fixture_->Edit("Operating Mode", "1", 3);  // 0x41, before the refused command
    fixture_->Edit("Sync Angle", "180");       // 0x45
    fixture_->Edit("Minimum Range", "1");      // 0x43, after it
    fixture_->Edit("UTC Offset", "5");         // another page's
    QVERIFY(!Saves(4));
    const QRegularExpression refusal(
        "^WARNING The command \\[0x45\\] to write .*Sync.* was refused with code 5$");
    QVERIFY2(fixture_->log.filter(refusal).size() == 1, qPrintable(fixture_->log.join('\n')));
    QCOMPARE(fixture_->sensor->ValueText("Operating Mode"), std::string("1"));
    QVERIFY(fixture_->sensor->Received(0x43).empty());
    QCOMPARE(fixture_->manager->getSetMapSize(), 4);
    fixture_->ClearFaults();
    QVERIFY(Saves(4));
    QCOMPARE(fixture_->sensor->ValueText("Sync Angle"), std::string("180"));
    QCOMPARE(fixture_->manager->getSetMapSize(), 1);
    fixture_->manager->GetLidarModuleInfo(3);
    QCOMPARE(fixture_->Shown("UTC Offset"), "5");
  }

  void FourByteCommandsAndSwitches() {
    fixture_->Edit("Heartbeat Period", "0", 2);  // the row's switch
    fixture_->Edit("Heartbeat Period", "0");
    QVERIFY(Saves(7));
    for (const char* name : {"Heartbeat Enabled", "Heartbeat Period"}) {
      QCOMPARE(fixture_->sensor->ValueText(name), std::string("0"));
    }
    QCOMPARE(fixture_->sensor->ValueText("Watchdog Time-Out"), std::string("2000"));
    Bytes sent = fixture_->sensor->Received(0xFF).back().payload;
    sent.resize(4);
    QCOMPARE(sent, (Bytes{0x01, 0x00, 0x01, 0x02}));
  }

  void FieldOfViewIsReadAndWritten() {
    VarkelManager& manager = *fixture_->manager;
    QSignalSpy fov_changed(&manager, &VarkelManager::fovConfigChanged);
    for (const char* bad : {"x", "360.1", "-1", "nan"}) {
      manager.SetMultiFovConfig(0, bad);
      QCOMPARE(fixture_->NextError(), "Input value of fov is invalid");
    }
    QCOMPARE(fov_changed.count(), 4);
    manager.SetMultiFovConfig(10, "5");
    QCOMPARE(manager.getSetMapSize(), 0);
    manager.SetMultiFovConfig(1, "45.5");
    fixture_->Edit("Channel Field of View", "2", 3);
    QVERIFY(Saves(5));
    const Bytes sent = Sent(0x22);
    QCOMPARE(sent.size(), 11U);
    QCOMPARE(sent[0], std::uint8_t{2});
    QCOMPARE(sent[3] * 256 + sent[4], 455);
    fov_changed.clear();
    manager.GetLidarModuleInfo(5);
    QCOMPARE(fov_changed.count(), 1);
    QCOMPARE(manager.FovList()[1], "45.5");
  }

  void FieldsThatWereNotReadAreNamed() {
    VarkelManager& manager = *fixture_->manager;
    fixture_->AddFault("0x42=error:9");
    fixture_->Edit("Intensity Threshold", "13");
    manager.SetMultiFovConfig(0, "10");
    const QStringList unread = manager.unreadFields(4);
    QCOMPARE(unread.size(), 8);
    QVERIFY(unread.contains("Noise Filter Level") && !unread.contains("Intensity Threshold"));
    QCOMPARE(manager.unreadFields(5), QStringList{"Channel Field of View"});
    QVERIFY(manager.unreadFields(99).isEmpty());
    QVERIFY(Saves(4));
    const QString warning =
        "WARNING The sensor did not report these before the save, so their last values are written: ";
    QVERIFY(fixture_->log.contains(warning + unread.join(", ")));
    QVERIFY(Saves(5));
    QVERIFY(fixture_->log.contains(warning + "Channel Field of View"));
    fixture_->ClearFaults();
    for (int page : {4, 5}) manager.GetLidarModuleInfo(page);
    QVERIFY(manager.unreadFields(4).isEmpty() && manager.unreadFields(5).isEmpty());
  }

  void EveryFailingVariableOfAPageIsNamed() {
    VarkelManager& manager = *fixture_->manager;
    for (int page = 0; page < manager.level1List().size(); ++page) manager.GetLidarModuleInfo(page);
    QVERIFY(manager.CheckModuleVarsWithinRange(3));
    fixture_->Edit("KTC Port", "80");
    fixture_->Edit("Gateway", "10.0.0");
    fixture_->Edit("VLAN ID", "x");
    fixture_->log.clear();
    QSignalSpy out_of_range(&manager, &VarkelManager::someVarOutOfRange);
    QVERIFY(!manager.CheckModuleVarsWithinRange(2));
    QStringList names;
    for (const auto& arguments : out_of_range) names.append(arguments.first().toString());
    names.sort();
    QCOMPARE(names, (QStringList{"Gateway", "KTC Port", "VLAN ID"}));
    QVERIFY(fixture_->log.contains("WARNING Detected that the user set Gateway has invalid IP format"));
    QVERIFY(!manager.CheckVarIsWithinRange("KTC Port") && manager.CheckVarIsWithinRange("no such variable"));
  }

  void RefusedBeforeAnythingIsSent() {
    const auto refusal = [this](const char* text) {
      fixture_->Edit("Sync Angle", text);
      fixture_->manager->Run(4);
      return fixture_->NextError();
    };
    fixture_->manager->setIsDownloadLog(true);
    QCOMPARE(refusal("180"), "Please wait for the operation log to download completely");
    fixture_->manager->setIsDownloadLog(false);
    QCOMPARE(refusal("many"), "Set Failed: UintParser: contains an illegal number, error:many");
    QCOMPARE(refusal(""),
             "Set Failed: Unknown error with this var: It has no current_val. var_name = Sync Angle");
    fixture_->manager->Run(99);
    QVERIFY(fixture_->errors.isEmpty());
    fixture_->manager->Stop();
    QCOMPARE(refusal("180"), "Please connect to lidar first");
    QVERIFY(fixture_->sensor->Received(0x45).empty());
  }

  void EditMadeDuringTheSaveStaysPending() {
    fixture_->AddFault("0x43=late:500");
    fixture_->Edit("Intensity Threshold", "20");
    fixture_->Edit("Noise Filter Level", "3");
    fixture_->manager->RunInBackground(4);
    QVERIFY(fixture_->sensor->WaitReceived(0x43, 1, std::chrono::seconds(5)));
    fixture_->Edit("Intensity Threshold", "21");
    QCOMPARE(fixture_->NextSuccess(), kSaved);
    QVERIFY(fixture_->IsEdited("Intensity Threshold") && !fixture_->IsEdited("Noise Filter Level"));
    QCOMPARE(fixture_->manager->getSetMapSize(), 1);
    QVERIFY(Saves(4));
    QCOMPARE(fixture_->sensor->ValueText("Intensity Threshold"), std::string("21"));
  }

 private:
  /// Whether the save reports success and nothing else.
  bool Saves(int page) {
    fixture_->errors.clear();
    fixture_->manager->Run(page);
    ControllerFixture::Wait([this] { return !fixture_->errors.isEmpty() || !fixture_->successes.isEmpty(); });
    return fixture_->errors.isEmpty() && fixture_->NextSuccess() == kSaved;
  }
  /// Payload of the only request with that command.
  Bytes Sent(std::uint8_t command) const {
    const auto requests = fixture_->sensor->Received(command);
    return requests.size() == 1 ? requests[0].payload : Bytes();
  }

  std::unique_ptr<ControllerFixture> fixture_;
};

const RegisterTest<PageWritingTest> register_page_writing_test;

}  // namespace

#include "page_writing_test.moc"
