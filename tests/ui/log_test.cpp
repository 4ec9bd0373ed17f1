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
#include "tests/ui/window_driver.h"

namespace {

/// Opens the log window.
class LogWindowDriver : public WindowDriver {
 public:
  LogWindowDriver() {
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
  void LinesAreFilteredByLevel() {
    const std::pair<const char*, const char*> lines[] = {{"a", "INFO"},  {"b", "ERROR"}, {"c", "WARNING"},
                                                         {"d", "BYTES"}, {"e", "BYTE"},  {"f", "other"},
                                                         {"", "INFO"}};
    const LogWindowDriver driver;
    for (const auto& [text, type] : lines) driver.Say(text, type);
    const QStringList all = {"INFO a", "ERROR b", "WARN c", "BYTES d", "BYTES e", "INFO f"};
    EVENTUALLY_COMPARE(driver.Lines(), all);
    driver.Click("logFilterInfo");
    QCOMPARE(driver.Lines(), all.mid(1, 4));
    driver.Click("logFilterInfo");
    QCOMPARE(driver.Lines(), all);
  }

  void OpensInFrontOfItsOwner() {
    const LogWindowDriver driver;
    const QQuickWindow& log = driver.view();
    const QPoint apart = log.geometry().center() - log.transientParent()->geometry().center();
    QVERIFY2(apart.manhattanLength() <= 2, qPrintable(QString("%1, %2").arg(apart.x()).arg(apart.y())));
  }

  void ByteFlowPauseAndClear() {
    const LogWindowDriver driver;
    driver.manager->set_ip_address("127.0.0.1");
    driver.manager->set_port(QString::number(driver.sensor.port()));
    driver.manager->ConnectLidar();
    EVENTUALLY_COMPARE(driver.Lines("INFO Lidar connected").size(), 1);
    QVERIFY(driver.Lines("^BYTES").isEmpty());
    driver.Click("byteFlowSwitch");
    driver.manager->ReadPageInBackground(0);
    EVENTUALLY_VERIFY(!driver.Lines("^BYTES").isEmpty());
    driver.manager->Stop();
    driver.Click("logPauseButton");
    const int shown = driver.log->rowCount();
    driver.Say("held back");
    LogModel other;  // not paused: once it has its line, the paused one would have had its own
    other.append(LogModel::Info, "later");
    EVENTUALLY_COMPARE(other.rowCount(), 1);
    QVERIFY(driver.log->waiting() > 0);
    QCOMPARE(driver.log->rowCount(), shown);
    driver.Click("logPauseButton");
    QCOMPARE(driver.Lines("held back").size(), 1);
    driver.Say("too late");
    driver.Click("logClearButton");
    driver.Say("new");
    EVENTUALLY_COMPARE(driver.Lines(), QStringList("INFO new"));
  }

  void FloodKeepsTheNewestLines() {
    const LogWindowDriver driver;
    const QAbstractItemModelTester tester(driver.log);
    driver.Click("logFilterBytes");
    for (int batch = 1; batch <= 24; ++batch) {
      for (int i = 0; i < 250; ++i) {
        driver.Say(QByteArray::number(batch).constData(), "INFO");
        driver.Say(QByteArray("7E 00 FF ").repeated(20).constData(), "BYTES");
      }
      const int count = std::min(5000, batch * 250);
      EVENTUALLY_COMPARE(driver.Line(count - 1), QString("INFO %1").arg(batch));
      QCOMPARE(driver.log->rowCount(), count);
    }
    QCOMPARE(driver.Line(0), "INFO 5");
    driver.Click("logFilterBytes");
    QCOMPARE(driver.log->rowCount(), 10000);
  }

  void LongLinesAreLimitedSeparately() {
    LogModel log;
    for (int line = 0; line < 40; ++line) log.append(LogModel::Info, QString(1000000, 'm'));
    EVENTUALLY_COMPARE(log.rowCount(), 33);  // what 32 MiB hold
  }
#ifndef _WIN32
  // On other systems the dialog is the system's own, which a test can't inspect.
  void SavingAsksForAFile() {
    LogWindowDriver driver;
    driver.Say("<b>48 °C</b>");
    EVENTUALLY_COMPARE(driver.log->rowCount(), 1);
    driver.Click("logSaveButton");
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
    auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
    const QRegularExpression dated("^varkel_log_[0-9]{4}-[0-9]{2}-[0-9]{2}\\.txt$");
    QVERIFY2(dated.match(name->text()).hasMatch(), qPrintable(name->text()));
    name->setText(driver.folder.filePath("log"));
    QMetaObject::invokeMethod(dialog, "accept");
    EVENTUALLY_VERIFY(QFile::exists(driver.folder.filePath("log.txt")));
  }
#endif

  void RecordsAndExplainsExchanges() {
    LogWindowDriver driver;
    const QString file = driver.folder.filePath("session.pcap");
    QCOMPARE(driver.manager->StartRecording(QUrl::fromLocalFile(file)), "");
    EVENTUALLY_COMPARE(driver.Text("recordButton"), "Stop recording");
    driver.Click("byteFlowSwitch");
    for (int connection = 0; connection < 2; ++connection) {
      driver.manager->set_ip_address("127.0.0.1");
      driver.manager->set_port(QString::number(driver.sensor.port()));
      driver.manager->ConnectLidar();
      EVENTUALLY_VERIFY(driver.manager->IsConnected());
      driver.manager->SendCommandInBackground("05", "");
      EVENTUALLY_COMPARE(driver.manager->CommandLogCnt(), connection + 1);
      driver.manager->Stop();
    }
    QVERIFY(driver.manager->decodedReply().contains("State = "));
    driver.Click("recordButton");
    EVENTUALLY_COMPARE(driver.Text("recordButton"), "Record…");
    std::ifstream recording(file.toStdString(), std::ios::binary);
    int asked = 0;
    const auto summary =
        quarn::lidar::ReadCapture(recording, [&](const quarn::lidar::CapturedExchange& exchange) {
          if (exchange.command == 5 && !exchange.reply.empty()) ++asked;
        });
    QVERIFY(asked >= 2);
    QVERIFY(summary.connections >= 2);

    const QStringList lines = driver.Lines();
    const int reply = lines.indexOf(QRegularExpression("BYTES RECV: 47 74 05 .*"));
    QVERIFY(reply > 0);
    QMetaObject::invokeMethod(driver.Find("logList"), "open", Q_ARG(QVariant, reply), Q_ARG(QVariant, true));
    const QString meaning = driver.log->index(reply).data(driver.log->roleNames().key("meaning")).toString();
    driver.manager->StartRecording(QUrl::fromLocalFile(file));
    QTest::qWait(300);
    driver.root->property("x");
    QMetaObject::invokeMethod(driver.root, "choosePage",
                              Q_ARG(QVariant, driver.manager->level1List().size() + 1));
    QTest::qWait(500);
    QVERIFY2(meaning.startsWith("0x05 (read ") && meaning.contains("Motor Speed = 60"), qPrintable(meaning));
  }

  void CopiesAndSavesTheLinesShown() {
    const LogWindowDriver driver;
    driver.Say("<b>48 °C</b>\n", "WARNING");
    driver.Say("FE AE", "BYTES");
    driver.Click("logFilterBytes");
    EVENTUALLY_COMPARE(driver.log->rowCount(), 1);
    const QRegularExpression line("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} WARN  <b>48 °C</b>\n$");
    driver.Click("logCopyButton");
    QVERIFY(line.match(QGuiApplication::clipboard()->text()).hasMatch());
    const QString path = driver.folder.filePath("log.txt");
    const auto save = [&](const QString& to) { return driver.log->save(QUrl::fromLocalFile(to)); };
    const auto saved = [&] {
      QFile file(path);
      return file.open(QIODevice::ReadOnly | QIODevice::Text) && line.match(file.readAll()).hasMatch();
    };
    QCOMPARE(save(path), "");
    QVERIFY(saved());
    QVERIFY(save(driver.folder.filePath("no/such.txt")).contains("could not be written"));

#ifndef _WIN32
    // A limit on the file size simulates a full disk: the log saved before is still there.
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
