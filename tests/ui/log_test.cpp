#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QRegularExpression>
#include <csignal>
#include <fstream>

#include "app/src/log_model.h"
#include "libquarn/Capture/src/captured_exchanges.h"
#include "tests/ui/desk.h"

namespace {

/// A desk whose user looks at the log.
class LogDesk : public Desk {
 public:
  LogDesk() {
    OpenLog();
    log = view().property("log").value<LogModel*>();
  }
  QString Line(int row) const {
    const auto text = [&](const char* role) {
      return log->index(row).data(log->roleNames().key(role)).toString();
    };
    return text("levelName") + ' ' + text("message");
  }
  QStringList Lines(const char* pattern = "") const {
    QStringList all;
    for (int row = 0; row < log->rowCount(); ++row) all << Line(row);
    return all.filter(QRegularExpression(pattern));
  }
  void Say(const char* text, const char* type = "INFO") const { emit manager->sendLogMessage(text, type); }

  LogModel* log = nullptr;
};

class LogTest : public QObject {
  Q_OBJECT
 private slots:
  void LinesComeByLevel() {
    const std::pair<const char*, const char*> lines[] = {{"a", "INFO"},  {"b", "ERROR"}, {"c", "WARNING"},
                                                         {"d", "BYTES"}, {"e", "BYTE"},  {"f", "other"},
                                                         {"", "INFO"}};
    const LogDesk desk;
    for (const auto& [text, type] : lines) desk.Say(text, type);
    const QStringList all = {"INFO a", "ERROR b", "WARN c", "BYTES d", "BYTES e", "INFO f"};
    EVENTUALLY_COMPARE(desk.Lines(), all);
    desk.Click("logFilterInfo");
    QCOMPARE(desk.Lines(), all.mid(1, 4));
    desk.Click("logFilterInfo");
    QCOMPARE(desk.Lines(), all);
  }

  void ByteFlowPauseAndClear() {
    const LogDesk desk;
    desk.manager->set_ip_address("127.0.0.1");
    desk.manager->set_port(QString::number(desk.sensor.port()));
    desk.manager->ConnectLidar();
    EVENTUALLY_COMPARE(desk.Lines("INFO Lidar connected").size(), 1);
    QVERIFY(desk.Lines("^BYTES").isEmpty());
    desk.Click("byteFlowSwitch");
    desk.manager->ReadPageInBackground(0);
    EVENTUALLY_VERIFY(!desk.Lines("^BYTES").isEmpty());
    desk.manager->Stop();
    desk.Click("logPauseButton");
    const int shown = desk.log->rowCount();
    desk.Say("held back");
    LogModel other;  // takes its line when the paused one would have taken its own
    other.append(LogModel::Info, "later");
    EVENTUALLY_COMPARE(other.rowCount(), 1);
    QVERIFY(desk.log->waiting() > 0);
    QCOMPARE(desk.log->rowCount(), shown);
    desk.Click("logPauseButton");
    QCOMPARE(desk.Lines("held back").size(), 1);
    desk.Say("too late");
    desk.Click("logClearButton");
    desk.Say("new");
    EVENTUALLY_COMPARE(desk.Lines(), QStringList("INFO new"));
  }

  void FloodKeepsTheNewestLines() {
    const LogDesk desk;
    const QAbstractItemModelTester tester(desk.log);
    desk.Click("logFilterBytes");
    for (int batch = 1; batch <= 24; ++batch) {
      for (int i = 0; i < 250; ++i) {
        desk.Say(QByteArray::number(batch).constData(), "INFO");
        desk.Say(QByteArray("7E 00 FF ").repeated(20).constData(), "BYTES");
      }
      const int count = std::min(5000, batch * 250);
      EVENTUALLY_COMPARE(desk.Line(count - 1), QString("INFO %1").arg(batch));
      QCOMPARE(desk.log->rowCount(), count);
    }
    QCOMPARE(desk.Line(0), "INFO 5");
    desk.Click("logFilterBytes");
    QCOMPARE(desk.log->rowCount(), 10000);
  }

  void LongLinesHaveABoundOfTheirOwn() {
    LogModel log;
    for (int line = 0; line < 40; ++line) log.append(LogModel::Info, QString(1000000, 'm'));
    EVENTUALLY_COMPARE(log.rowCount(), 33);  // what 32 MiB hold
  }
#ifndef _WIN32
  // Elsewhere the dialog is the system's, of which a test of ours sees nothing.
  void SavingAsksWhere() {
    LogDesk desk;
    desk.Say("<b>48 °C</b>");
    EVENTUALLY_COMPARE(desk.log->rowCount(), 1);
    desk.Click("logSaveButton");
    QFileDialog* dialog = nullptr;
    const auto is_open = [&dialog] {
      for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && dialog == nullptr) dialog = qobject_cast<QFileDialog*>(widget);
      }
      return dialog != nullptr;
    };
    EVENTUALLY_VERIFY(is_open());
    QCOMPARE(dialog->windowTitle(), "Save the log");
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
    dialog->findChild<QLineEdit*>("fileNameEdit")->setText(desk.folder.filePath("log"));
    QMetaObject::invokeMethod(dialog, "accept");
    EVENTUALLY_VERIFY(QFile::exists(desk.folder.filePath("log.txt")));
  }
#endif

  void RecordsAndExplainsExchanges() {
    LogDesk desk;
    const QString file = desk.folder.filePath("session.pcap");
    QCOMPARE(desk.manager->StartRecording(QUrl::fromLocalFile(file)), "");
    EVENTUALLY_COMPARE(desk.Text("recordButton"), "Stop recording");
    desk.Click("byteFlowSwitch");
    for (int connection = 0; connection < 2; ++connection) {
      desk.manager->set_ip_address("127.0.0.1");
      desk.manager->set_port(QString::number(desk.sensor.port()));
      desk.manager->ConnectLidar();
      EVENTUALLY_VERIFY(desk.manager->IsConnected());
      desk.manager->SendCommandInBackground("05", "");
      EVENTUALLY_COMPARE(desk.manager->CommandLogCnt(), connection + 1);
      desk.manager->Stop();
    }
    QVERIFY(desk.manager->decodedReply().contains("State = "));
    desk.Click("recordButton");
    EVENTUALLY_COMPARE(desk.Text("recordButton"), "Record…");
    std::ifstream recording(file.toStdString(), std::ios::binary);
    int asked = 0;
    const auto summary =
        quarn::lidar::ReadCapture(recording, [&](const quarn::lidar::CapturedExchange& exchange) {
          if (exchange.command == 5 && !exchange.reply.empty()) ++asked;
        });
    QVERIFY(asked >= 2);
    QVERIFY(summary.connections >= 2);

    const QStringList lines = desk.Lines();
    const int reply = lines.indexOf(QRegularExpression("BYTES RECV: 47 74 05 .*"));
    QVERIFY(reply > 0);
    QMetaObject::invokeMethod(desk.Find("logList"), "open", Q_ARG(QVariant, reply), Q_ARG(QVariant, true));
    const QString meaning = desk.log->index(reply).data(desk.log->roleNames().key("meaning")).toString();
    desk.manager->StartRecording(QUrl::fromLocalFile(file));
    QTest::qWait(300);
    desk.root->property("x");
    QMetaObject::invokeMethod(desk.root, "choosePage",
                              Q_ARG(QVariant, desk.manager->level1List().size() + 1));
    QTest::qWait(500);
    QVERIFY2(meaning.startsWith("0x05 (read ") && meaning.contains("Motor Speed = 60"), qPrintable(meaning));
  }

  void CopiesAndSavesTheLinesShown() {
    const LogDesk desk;
    desk.Say("<b>48 °C</b>\n", "WARNING");
    desk.Say("FE AE", "BYTES");
    desk.Click("logFilterBytes");
    EVENTUALLY_COMPARE(desk.log->rowCount(), 1);
    const QRegularExpression line("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} WARN  <b>48 °C</b>\n$");
    desk.Click("logCopyButton");
    QVERIFY(line.match(QGuiApplication::clipboard()->text()).hasMatch());
    const QString path = desk.folder.filePath("log.txt");
    const auto save = [&](const QString& to) { return desk.log->save(QUrl::fromLocalFile(to)); };
    const auto saved = [&] {
      QFile file(path);
      return file.open(QIODevice::ReadOnly | QIODevice::Text) && line.match(file.readAll()).hasMatch();
    };
    QCOMPARE(save(path), "");
    QVERIFY(saved());
    QVERIFY(save(desk.folder.filePath("no/such.txt")).contains("could not be written"));

#ifndef _WIN32
    // A full disk, simulated by a limit on the size of a file: the log saved before is still there.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit size{};
    getrlimit(RLIMIT_FSIZE, &size);
    const rlimit full{8, size.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    const QString error = save(path);
    setrlimit(RLIMIT_FSIZE, &size);
    QVERIFY2(error.contains("could not be written"), qPrintable(error));
    QVERIFY(saved());
#endif
  }
};
const RegisterTest<LogTest> register_log_test;

}  // namespace

#include "log_test.moc"
