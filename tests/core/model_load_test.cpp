#include <QTemporaryDir>

#include "tests/core/core_test.h"
#include "tests/support/qt_files.h"

namespace {

class ModelLoadTest : public QObject {
  Q_OBJECT
 private slots:
  void FaultsOfATableAreLoggedOnceALoad() {
    const QTemporaryDir folder;
    Put(folder.filePath("odd.csv"),
        Content("Config/varID/Quenta.csv")
            .replace("Sync Angle,1,uint16,90,0~359,deg,", "X,1,uint8,90,,,\"0,5\"")
            .replace("5_3_1_2_1", "5_3_9_2_9"));
    ControllerFixture fixture;
    fixture.manager->InitConfigFileParser(QDir("Config/varID").relativeFilePath(folder.filePath("odd")));
    const QStringList texts[] = {
        {"ERROR config file error, Please check the configuration of type 2 of X"},
        {"WARNING The model table",
         "puts fields at wrong places: set command 0x45, \"X\" (13-2): uint8 takes 1"},
        {"WARNING The model table", ": variable 13-2 \"X\", row ",
         "Coefficient \"0,5\" is a number only at"}};
    QTRY_VERIFY(!fixture.log.isEmpty());
    for (const QStringList& text : texts) {
      const QStringList lines = fixture.log.filter(text.last());
      QVERIFY2(lines.size() == 1 && lines[0].startsWith(text.first()), qPrintable(fixture.log.join('\n')));
      QVERIFY(text.size() < 3 || lines[0].contains(text[1]));
    }
  }
};

const RegisterTest<ModelLoadTest> registered;

}  // namespace

#include "model_load_test.moc"
