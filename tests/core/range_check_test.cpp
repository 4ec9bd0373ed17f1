#include "VarkelCore/src/range_check.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "tests/core/core_test.h"

namespace {

using varkel::RangeFault;

/// A table of one variable.
std::unique_ptr<varkel::ConfigParser> OneVariable(const QTemporaryDir& folder, const QString& type,
                                                  const QString& range, const QString& set_coefficient,
                                                  const QString& value, int permission = 1) {
  const QString path = folder.filePath("table.csv");
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return nullptr;
  file.write(
      "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
      "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n0,Page,Group\n");
  file.write(QString("1,1,0x01,0x02,1,Value,%1,%2,%3,%4,,,%5,,1_1_1_1,4\n")
                 .arg(permission)
                 .arg(type, value, range, set_coefficient)
                 .toUtf8());
  file.close();
  auto catalogue = std::make_unique<varkel::ConfigParser>(path.toStdString());
  catalogue->ExtractConfigInfo();
  return catalogue;
}

class RangeCheckTest : public QObject {
  Q_OBJECT
 private slots:
  void SingleCheck_data();
  void SingleCheck();
  void PageCheck_data();
  void PageCheck();
  void EveryFailingVariableOfAPageIsNamed();
};

void RangeCheckTest::SingleCheck_data() {
  QTest::addColumn<QString>("range");
  QTest::addColumn<QString>("set_coefficient");
  QTest::addColumn<QString>("value");
  QTest::addColumn<bool>("within");
  QTest::newRow("below") << "1~100"
                         << ""
                         << "0" << false;
  QTest::newRow("lowest") << "1~100"
                          << ""
                          << "1" << true;
  QTest::newRow("truncated to the highest") << "1~100"
                                            << ""
                                            << "100.9" << true;
  QTest::newRow("above") << "1~100"
                         << ""
                         << "101" << false;
  QTest::newRow("a zero bound is no range") << "0~100"
                                            << ""
                                            << "500" << true;
  QTest::newRow("scaled") << "1~100"
                          << "10"
                          << "20" << false;
  QTest::newRow("negative range") << "-10~-1"
                                  << ""
                                  << "-10.9" << true;
  QTest::newRow("no number") << "1~100"
                             << ""
                             << "x" << false;
  QTest::newRow("too large a number") << "1~100"
                                      << ""
                                      << "1e99" << false;
}

void RangeCheckTest::SingleCheck() {
  QFETCH(QString, range);
  QFETCH(QString, set_coefficient);
  QFETCH(QString, value);
  const QTemporaryDir folder;
  const auto catalogue = OneVariable(folder, "float32", range, set_coefficient, value);
  QTEST(varkel::IsWithinRange(*catalogue, catalogue->FindByName("Value"), "Value"), "within");
  QVERIFY(varkel::IsWithinRange(*catalogue, nullptr, "unknown"));  // never blocks a write
}

void RangeCheckTest::PageCheck_data() {
  QTest::addColumn<QString>("type");
  QTest::addColumn<QString>("range");
  QTest::addColumn<QString>("value");
  QTest::addColumn<int>("permission");
  QTest::addColumn<int>("fault");
  const auto row = [](const char* type, const char* range, const char* value, RangeFault fault,
                      int permission = 1) {
    QTest::addRow("%s %s %s %d", type, range, value, permission)
        << type << range << value << permission << static_cast<int>(fault);
  };
  row("int16", "1~100", "100", RangeFault::kNone);
  row("int16", "1~100", "101", RangeFault::kOutOfRange);
  row("int16", "1~100", "101", RangeFault::kNone, 0);
  row("int16", "0~100", "101", RangeFault::kNone);
  row("float32", "1~100", "100.9", RangeFault::kNone);  // judged as an integer
  row("uint8", "1~100", "x", RangeFault::kNotANumber);
  row("uint8", "1~100", "99999999999", RangeFault::kNotANumber);
  row("string", "1~100", "x", RangeFault::kNone);
  row("raw", "", "ABCD", RangeFault::kNone);
  row("raw", "", "ABCDE", RangeFault::kOutOfRange);
  row("IP", "", "192.168.1.255", RangeFault::kNone);
  row("IP", "", "192.168.1.256", RangeFault::kIpFormat);
  row("IP", "", "192.168.1.1.1", RangeFault::kIpFormat);
  row("MAC", "", "00:1A:2B:3C:4D:5E", RangeFault::kNone);
  row("MAC", "", "00:1A:2B:3C:4D", RangeFault::kMacFormat);
  row("MAC", "", "00:1A:2B:3C:4D:5G", RangeFault::kMacFormat);
}

void RangeCheckTest::PageCheck() {
  QFETCH(QString, type);
  QFETCH(QString, range);
  QFETCH(QString, value);
  QFETCH(int, permission);
  const QTemporaryDir folder;
  const auto catalogue = OneVariable(folder, type, range, "10", value, permission);
  QTEST(static_cast<int>(varkel::JudgePageValue(*catalogue, *catalogue->FindByName("Value"))), "fault");
}

void RangeCheckTest::EveryFailingVariableOfAPageIsNamed() {
  Bench bench;
  QVERIFY(bench.manager->CheckModuleVarsWithinRange(2));
  bench.Edit("KTC Port", "80");
  bench.Edit("Gateway", "10.0.0");
  QSignalSpy out_of_range(bench.manager.get(), &VarkelManager::someVarOutOfRange);
  QVERIFY(!bench.manager->CheckModuleVarsWithinRange(2));
  QCOMPARE(out_of_range.count(), 2);
  QVERIFY(bench.log.contains("WARNING Detected that the user set KTC Port is out of range"));
  QVERIFY(bench.log.contains("WARNING Detected that the user set Gateway has invalid IP format"));
  QVERIFY(bench.manager->CheckModuleVarsWithinRange(3));
}

const RegisterTest<RangeCheckTest> registered;

}  // namespace

#include "range_check_test.moc"
