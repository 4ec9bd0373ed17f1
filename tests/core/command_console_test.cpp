#include "tests/core/core_test.h"

namespace {

constexpr char kBadHeader[] = "Incorrect KTC header was entered. Parsing failed.";
constexpr char kBadPayload[] = "Incorrect KTC payload was entered. Parsing failed.";

class CommandConsoleTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    bench_ = std::make_unique<Bench>();
    QVERIFY(bench_->ConnectOn());
    bench_->sensor->ClearReceived();
  }

  void ReplyIsShownAndRemembered() {
    VarkelManager& manager = *bench_->manager;
    QSignalSpy changed(&manager, &VarkelManager::sendCommandHistoryChanged);
    manager.SendCommandInBackground(" 0x52\n", "0x01 02 \r\n");  // copied with what stands around it
    QVERIFY(changed.wait());
    QCOMPARE(bench_->sensor->Received(0x52).front().payload, (std::vector<std::uint8_t>{1, 2}));
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
      bench_->manager->SendCommand(texts[0], texts[1]);
      QCOMPARE(bench_->NextError(), texts[2]);
    }
    QVERIFY(bench_->sensor->Received().empty());
    QCOMPARE(bench_->manager->CommandLogCnt(), 0);
  }

  void HistoryKeepsTheLastTenThatWereAnswered() {
    for (int i = 0; i < 11; ++i) bench_->manager->SendCommand("0x52", QString("01 0%1").arg(i, 0, 16));
    bench_->AddFault("0x52=error:2");
    bench_->manager->SendCommand("0x52", "01 0b");
    QCOMPARE(bench_->manager->getSendKtcCommandReturnHeader(), "");  // of the failed one
    const QVariantList history = bench_->manager->SendCommandHistory();
    QCOMPARE(history.size(), 10);
    QCOMPARE(history.first().toMap()["send_payload_history"], "01 0a");
    QCOMPARE(history.last().toMap()["send_payload_history"], "01 01");
  }

  void LongReplyIsCut() {
    bench_->manager->SendCommand("0x62", "");  // a log of several kilobytes
    QVERIFY(bench_->NextError().startsWith("WARNING: This return payload is too long, only the first 1024"));
    QCOMPARE(bench_->manager->getSendKtcCommandReturnPayload().size(), 1024 * 3 - 1);
  }

  void RestartAndResetDisconnect() {
    const QStringList cases[] = {{"10", "Lidar restart."}, {"0x25", "Lidar reset."}};
    for (const QStringList& texts : cases) {
      init();
      bench_->manager->SendCommandInBackground(texts[0], "");
      QCOMPARE(bench_->NextSuccess(), texts[1]);
      QVERIFY(!bench_->manager->IsConnected());
      QCOMPARE(bench_->manager->getSendKtcCommandReturnPayload(), "");  // the reply carries none
    }
  }

 private:
  std::unique_ptr<Bench> bench_;
};

const RegisterTest<CommandConsoleTest> registered;

}  // namespace

#include "command_console_test.moc"
