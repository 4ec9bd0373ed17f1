#include "tests/core/core_test.h"

namespace {

constexpr char kBadHeader[] = "Incorrect KTC header was entered. Parsing failed.";
constexpr char kBadPayload[] = "Incorrect KTC payload was entered. Parsing failed.";

class CommandConsoleTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    fixture_ = std::make_unique<ControllerFixture>();
    QVERIFY(fixture_->ConnectOn());
    fixture_->sensor->ClearReceived();
  }

  void ReplyIsShownAndRemembered() {
    VarkelManager& manager = *fixture_->manager;
    QSignalSpy changed(&manager, &VarkelManager::sendCommandHistoryChanged);
    manager.SendCommandInBackground(" 0x52\n", "0x01 02 \r\n");  // copied with the surrounding characters
    QVERIFY(changed.wait());
    QCOMPARE(fixture_->sensor->Received(0x52).front().payload, (std::vector<std::uint8_t>{1, 2}));
    QCOMPARE(manager.getSendKtcCommandReturnHeader(), "47 74 52 00 00 00 00 0B");
    QCOMPARE(manager.getSendKtcCommandReturnPayload().size(), 11 * 3 - 1);
    const QVariantMap record = manager.SendCommandHistory().first().toMap();
    QCOMPARE(record["send_cmd_history"], "52");
    QCOMPARE(record["send_payload_history"], "01 02");
    const QRegExp time("[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2}");
    QVERIFY(time.exactMatch(record["record_time"].toString()));
  }

  void TextsThatCanNotBeSent() {
    const QStringList cases[] = {{"zz", "", kBadHeader},     {"", "", kBadHeader},
                                 {"0x", "", kBadHeader},     {"0x107", "", kBadHeader},
                                 {"-7", "", kBadHeader},     {"07", "01 0g", kBadPayload},
                                 {"07", "100", kBadPayload}, {"07", "01  02", kBadPayload}};
    for (const QStringList& texts : cases) {
      fixture_->manager->SendCommand(texts[0], texts[1]);
      QCOMPARE(fixture_->NextError(), texts[2]);
    }
    QVERIFY(fixture_->sensor->Received().empty());
    QCOMPARE(fixture_->manager->CommandLogCnt(), 0);
  }

  void HistoryKeepsTheLastTenThatWereAnswered() {
    for (int i = 0; i < 11; ++i) fixture_->manager->SendCommand("0x52", QString("01 0%1").arg(i, 0, 16));
    fixture_->AddFault("0x52=error:2");
    fixture_->manager->SendCommand("0x52", "01 0b");
    QCOMPARE(fixture_->manager->getSendKtcCommandReturnHeader(), "");  // of the failed command
    const QVariantList history = fixture_->manager->SendCommandHistory();
    QCOMPARE(history.size(), 10);
    QCOMPARE(history.first().toMap()["send_payload_history"], "01 0a");
    QCOMPARE(history.last().toMap()["send_payload_history"], "01 01");
  }

  void LongReplyIsCut() {
    fixture_->manager->SendCommand("0x62", "");  // a log of several kilobytes
    QVERIFY(
        fixture_->NextError().startsWith("WARNING: This return payload is too long, only the first 1024"));
    QCOMPARE(fixture_->manager->getSendKtcCommandReturnPayload().size(), 1024 * 3 - 1);
  }

  void RestartAndResetDisconnect() {
    const QStringList cases[] = {{"10", "Lidar restart."}, {"0x25", "Lidar reset."}};
    for (const QStringList& texts : cases) {
      init();
      fixture_->manager->SendCommandInBackground(texts[0], "");
      QCOMPARE(fixture_->NextSuccess(), texts[1]);
      QVERIFY(!fixture_->manager->IsConnected());
      QCOMPARE(fixture_->manager->getSendKtcCommandReturnPayload(), "");  // the reply has none
    }
  }

 private:
  std::unique_ptr<ControllerFixture> fixture_;
};

const RegisterTest<CommandConsoleTest> register_command_console_test;

}  // namespace

#include "command_console_test.moc"
