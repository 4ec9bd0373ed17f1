#include <sys/resource.h>

#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

#include "app/src/log_model.h"

namespace {

QString Message(const LogModel& log, int row) {
  return log.data(log.index(row), log.roleNames().key("message")).toString();
}

class LogModelTest : public QObject {
  Q_OBJECT
 private slots:
  void KeepsTheNewestLines() {
    LogModel log;
    const QAbstractItemModelTester tester(&log);
    for (int i = 0; i < 9000; ++i) log.append(LogModel::Info, QString::number(i));
    QTRY_COMPARE(log.rowCount(), 9000);
    log.setLevelShown(LogModel::Bytes, false);
    for (int i = 9000; i < 12000; ++i) {
      log.append(i % 2 == 0 ? LogModel::Info : LogModel::Bytes, QString::number(i));
    }
    // 10,000 are kept, of which the 1,500 odd ones since 9,000 are not shown.
    QTRY_COMPARE(log.rowCount(), 8500);
    QCOMPARE(Message(log, 0), "2000");
    QCOMPARE(Message(log, 8499), "11998");
  }

  void FiltersByLevel() {
    LogModel log;
    log.append(LogModel::Info, "a");
    log.append(LogModel::Error, "b");
    log.append(99, "not a level");
    QTRY_COMPARE(log.rowCount(), 3);
    log.setLevelShown(LogModel::Info, false);
    QCOMPARE(log.rowCount(), 2);
    QCOMPARE(Message(log, 0), "b");
    log.setLevelShown(LogModel::Info, true);
    log.setLevelShown(-1, false);
    QCOMPARE(log.rowCount(), 3);
    QCOMPARE(Message(log, 0), "a");
  }

  void PauseHoldsLinesBackAndClearDropsThem() {
    LogModel log;
    log.append(LogModel::Info, "before");
    log.setPaused(true);
    log.append(LogModel::Info, "during");
    QSignalSpy inserted(&log, &QAbstractItemModel::rowsInserted);
    QVERIFY(!inserted.wait(100));
    QCOMPARE(log.waiting(), 2);
    log.setPaused(false);
    QCOMPARE(log.rowCount(), 2);
    QCOMPARE(log.waiting(), 0);
    log.append(LogModel::Info, "waiting");
    log.clear();
    log.append(LogModel::Info, "new");
    QTRY_COMPARE(log.rowCount(), 1);
    QCOMPARE(Message(log, 0), "new");
  }

  void CopiesAndSavesTheLinesShown() {
    LogModel log;
    log.append(LogModel::Warning, "<b>48 °C</b>\n");
    log.append(LogModel::Bytes, "FE AE");
    log.setLevelShown(LogModel::Bytes, false);
    QTRY_COMPARE(log.rowCount(), 1);
    const QRegularExpression line("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} WARN  <b>48 °C</b>\n$");
    log.copy();
    QVERIFY(line.match(QGuiApplication::clipboard()->text()).hasMatch());
    QTemporaryDir folder;
    QFile file(folder.filePath("log.txt"));
    QCOMPARE(log.save(QUrl::fromLocalFile(file.fileName())), "");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(line.match(file.readAll()).hasMatch());
    QVERIFY(log.save(QUrl::fromLocalFile(folder.filePath("no/such.txt"))).contains("could not be written"));

    // A full disk, for which the largest size of a file stands in: the log saved before is still there.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit size{};
    getrlimit(RLIMIT_FSIZE, &size);
    const rlimit full{8, size.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    const QString error = log.save(QUrl::fromLocalFile(file.fileName()));
    setrlimit(RLIMIT_FSIZE, &size);
    QVERIFY2(error.contains("could not be written"), qPrintable(error));
    file.close();
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(line.match(file.readAll()).hasMatch());
  }
};

}  // namespace

QTEST_MAIN(LogModelTest)
#include "log_model_test.moc"
