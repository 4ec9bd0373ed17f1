#include <QDir>
#include <QTemporaryDir>

#include "tests/core/core_test.h"
#include "tests/support/qt_files.h"

namespace {

class ModelLoadTest : public QObject {
  Q_OBJECT
 private slots:
  void FaultsOfATableAreLoggedOncePerLoad() {
    const QTemporaryDir folder(QDir::current().filePath("table-XXXXXX"));  // on the tables' own drive
    Put(folder.filePath("odd.csv"),
        Content("Config/varID/Quenta.csv")
            .replace("Sync Angle,1,uint16,90,0~359,deg,", "X,1,uint8,90,,,\"0,5\"")
            .replace("5_3_1_2_1", "5_3_9_2_9"));
    ControllerFixture fixture;
    fixture.manager->InitConfigFileParser(QDir("Config/varID").relativeFilePath(folder.filePath("odd")));
    QObject* const findings = fixture.manager->findings();
    QTRY_VERIFY(!fixture.log.isEmpty() && !findings->property("lines").toStringList().isEmpty());
    QVERIFY(findings->property("summary").toString().endsWith(" in odd.csv"));
    QCOMPARE(findings->property("lines")
                 .toStringList()
                 .filter(QRegularExpression("^odd.csv:\\d+: VarLen: "))
                 .size(),
             1);
    for (const char* line :
         {"ERROR config file error.*type 2 of X", "WARNING .*set command 0x45.*uint8 takes 1",
          "WARNING .*Coefficient \"0,5\" only begins with a number"}) {
      QVERIFY2(fixture.log.filter(QRegularExpression(line)).size() == 1, qPrintable(fixture.log.join('\n')));
    }
    fixture.manager->InitConfigFileParser("Quenta");
    QVERIFY(findings->property("lines").toStringList().isEmpty());
  }
};

const RegisterTest<ModelLoadTest> register_model_load_test;

}  // namespace

#include "model_load_test.moc"
