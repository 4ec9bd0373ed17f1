#include <QTest>

#include "tests/core/core_test.h"

namespace {

constexpr char kBadHeader[] = "Incorrect KTC header was entered. Parsing failed.";
constexpr char kBadPayload[] = "Incorrect KTC payload was entered. Parsing failed.";

class CommandConsoleTest : public QObject {
  Q_OBJECT
 private slots:
  void init();
  void ReplyIsShownAndRemembered();
  void TextsThatCanNotBeSent_data();
  void TextsThatCanNotBeSent();
  void HistoryKeepsTheLastTen();
  void LongReplyIsCut();
  void FailureEmptiesTheReply();
  void RestartAndResetDisconnect_data();
  void RestartAndResetDisconnect();

 private:
  std::unique_ptr<Bench> bench_;
};

void CommandConsoleTest::init() {
  bench_ = std::make_unique<Bench>();
  bench_->manager->setModuleIndexUse(-1);
  QVERIFY(bench_->Connect());
  bench_->sensor->ClearReceived();
}

void CommandConsoleTest::ReplyIsShownAndRemembered() {
  VarkelManager& manager = *bench_->manager;
  QSignalSpy changed(&manager, &VarkelManager::sendCommandHistoryChanged);
  manager.SendCommandInBackground("0x52", "0x01 02");
  QVERIFY(changed.wait());
  QCOMPARE(bench_->sensor->Received(0x52).front().payload, (std::vector<std::uint8_t>{1, 2}));
  QCOMPARE(manager.getSendKtcCommandReturnHeader(), QString("47 74 52 00 00 00 00 0B"));
  QCOMPARE(manager.getSendKtcCommandReturnPayload().size(), 11 * 3 - 1);
  const QVariantMap record = manager.SendCommandHistory().first().toMap();
  QCOMPARE(record["send_cmd_history"].toString(), QString("52"));
  QCOMPARE(record["send_payload_history"].toString(), QString("01 02"));
  QVERIFY(QRegExp("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d").exactMatch(record["record_time"].toString()));
}

void CommandConsoleTest::TextsThatCanNotBeSent_data() {
  QTest::addColumn<QString>("command");
  QTest::addColumn<QString>("payload");
  QTest::addColumn<QString>("error");
  QTest::newRow("no hexadecimal") << "zz"
                                  << "" << kBadHeader;
  QTest::newRow("no command") << ""
                              << "" << kBadHeader;
  QTest::newRow("prefix alone") << "0x"
                                << "" << kBadHeader;
  QTest::newRow("more than a byte") << "0x107"
                                    << "" << kBadHeader;
  QTest::newRow("negative") << "-7"
                            << "" << kBadHeader;
  QTest::newRow("payload letters") << "07"
                                   << "01 0g" << kBadPayload;
  QTest::newRow("payload too large") << "07"
                                     << "100" << kBadPayload;
  QTest::newRow("two blanks") << "07"
                              << "01  02" << kBadPayload;
}

void CommandConsoleTest::TextsThatCanNotBeSent() {
  QFETCH(QString, command);
  QFETCH(QString, payload);
  bench_->manager->SendCommand(command, payload);
  QTEST(bench_->NextError(), "error");
  QVERIFY(bench_->sensor->Received().empty());
  QCOMPARE(bench_->manager->CommandLogCnt(), 0);
}

void CommandConsoleTest::HistoryKeepsTheLastTen() {
  for (int i = 0; i < 11; ++i)
    bench_->manager->SendCommand("0x52", QString("01 %1").arg(i, 2, 16, QChar('0')));
  const QVariantList history = bench_->manager->SendCommandHistory();
  QCOMPARE(history.size(), 10);
  QCOMPARE(history.first().toMap()["send_payload_history"].toString(), QString("01 0a"));
  QCOMPARE(history.last().toMap()["send_payload_history"].toString(), QString("01 01"));
}

void CommandConsoleTest::LongReplyIsCut() {
  bench_->manager->SendCommand("0x62", "");  // a log of several kilobytes
  QVERIFY2(bench_->NextError().startsWith("WARNING: This return payload is too long, only the first 1024"),
           "");
  QCOMPARE(bench_->manager->getSendKtcCommandReturnPayload().size(), 1024 * 3 - 1);
}

void CommandConsoleTest::FailureEmptiesTheReply() {
  bench_->manager->SendCommand("07", "");
  QVERIFY(!bench_->manager->getSendKtcCommandReturnHeader().isEmpty());
  QSignalSpy changed(bench_->manager.get(), &VarkelManager::sendCommandHistoryChanged);
  bench_->sensor->Misbehave("0x07=error:2");
  bench_->manager->SendCommand("07", "");
  QCOMPARE(bench_->NextError(),
           QString("Query ktc command fail. Please input right ktc command header and payload."));
  QCOMPARE(bench_->manager->getSendKtcCommandReturnHeader(), QString());
  QCOMPARE(bench_->manager->CommandLogCnt(), 1);
  QCOMPARE(changed.count(), 1);
}

void CommandConsoleTest::RestartAndResetDisconnect_data() {
  QTest::addColumn<QString>("command");
  QTest::addColumn<QString>("notice");
  QTest::newRow("restart") << "10"
                           << "Lidar restart.";
  QTest::newRow("reset") << "0x25"
                         << "Lidar reset.";
}

void CommandConsoleTest::RestartAndResetDisconnect() {
  QFETCH(QString, command);
  bench_->manager->SendCommandInBackground(command, "");
  QTEST(bench_->NextSuccess(), "notice");
  QVERIFY(!bench_->manager->IsConnected());
}

const RegisterTest<CommandConsoleTest> registered;

}  // namespace

#include "command_console_test.moc"
