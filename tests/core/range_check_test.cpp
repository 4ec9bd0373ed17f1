#include "VarkelCore/src/pages/range_check.h"

#include <QFile>
#include <QTemporaryDir>

#include "tests/core/core_test.h"

namespace {

using varkel::RangeFault;

/// A table of one variable.
std::unique_ptr<varkel::ConfigParser> OneVariable(const QString& type, const QString& range,
                                                  const QString& set_coefficient, const QString& value,
                                                  int permission = 1) {
  const QTemporaryDir folder;
  QFile file(folder.filePath("table.csv"));
  if (!file.open(QIODevice::WriteOnly)) return nullptr;
  file.write(
      "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
      "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n0,Page,Group\n");
  file.write(QString("1,1,0x01,0x02,1,Value,%1,%2,%3,%4,,,%5,,1_1_1_1,4\n")
                 .arg(permission)
                 .arg(type, value, range, set_coefficient)
                 .toUtf8());
  file.close();
  auto catalogue = std::make_unique<varkel::ConfigParser>(file.fileName().toStdString());
  catalogue->ExtractConfigInfo();
  return catalogue;
}

class RangeCheckTest : public QObject {
  Q_OBJECT
 private slots:
  void SingleCheck() {
    const struct {
      const char* range;
      const char* value;
      bool within;
      const char* set_coefficient = "";
    } cases[] = {{"1~100", "0", false},        {"1~100", "100.9", true},  // truncated to the highest
                 {"1~100", "101", false},      {"0~100", "500", true},    // a zero bound is no range
                 {"1~100", "20", false, "10"}, {"-10~-1", "-10.9", true},
                 {"1~100", "x", false},        {"1~100", "1e99", false}};
    for (const auto& [range, value, within, set_coefficient] : cases) {
      const auto catalogue = OneVariable("float32", range, set_coefficient, value);
      QVERIFY2(varkel::IsWithinRange(*catalogue, catalogue->FindByName("Value"), "Value") == within, value);
      QVERIFY(varkel::IsWithinRange(*catalogue, nullptr, "unknown"));  // never blocks a write
    }
  }

  void PageCheck() {
    const struct {
      const char* type;
      const char* range;
      const char* value;
      RangeFault fault;
      int permission = 1;
    } cases[] = {{"int16", "1~100", "100", RangeFault::kNone},
                 {"int16", "1~100", "101", RangeFault::kOutOfRange},
                 {"int16", "1~100", "101", RangeFault::kNone, 0},
                 {"int16", "0~100", "101", RangeFault::kNone},
                 {"float32", "1~100", "100.9", RangeFault::kNone},  // judged as an integer
                 {"uint8", "1~100", "x", RangeFault::kNotANumber},
                 {"uint8", "1~100", "99999999999", RangeFault::kNotANumber},
                 {"string", "1~100", "x", RangeFault::kNone},
                 {"raw", "", "ABCD", RangeFault::kNone},
                 {"raw", "", "ABCDE", RangeFault::kOutOfRange},
                 {"IP", "", "192.168.1.255", RangeFault::kNone},
                 {"IP", "", "192.168.1.256", RangeFault::kIpFormat},
                 {"IP", "", "192.168.1.1.1", RangeFault::kIpFormat},
                 {"MAC", "", "00:1A:2B:3C:4D:5E", RangeFault::kNone},
                 {"MAC", "", "00:1A:2B:3C:4D", RangeFault::kMacFormat},
                 {"MAC", "", "00:1A:2B:3C:4D:5G", RangeFault::kMacFormat}};
    for (const auto& [type, range, value, fault, permission] : cases) {
      const auto catalogue = OneVariable(type, range, "10", value, permission);
      QVERIFY2(varkel::JudgePageValue(*catalogue, *catalogue->FindByName("Value")) == fault, value);
    }
  }

  void EveryFailingVariableOfAPageIsNamed() {
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
};

const RegisterTest<RangeCheckTest> registered;

}  // namespace

#include "range_check_test.moc"
