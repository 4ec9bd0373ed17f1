#include "VarkelCore/src/pages/page_description.h"

#include <QFile>
#include <QTemporaryDir>

#include "VarkelCore/src/catalogue/model_names.h"
#include "tests/core/core_test.h"

namespace {

constexpr char kTable[] =
    "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
    "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n"
    "0,Page,First,Second\n"
    "0,Empty page\n"
    "1,1,0x01,,,Behind,1,uint8,7,,mm,,,,1_1_2_1,1\n"
    "1,2,0x01,,,Ahead,0,uint8,1,,,,,,1_1_1_0,1\n"
    "1,3,0x01,,,Same place,0,uint8,1,,,,,,1_1_1_0,1\n"
    "1,4,0x01,0x02,1,Filter on,1,uint8,1,0|1,,,,,1_2_1_2_1,1\n"
    "1,5,0x01,0x02,2,Filter,1,uint8,3,,,,,,1_2_1_2,1\n"
    "1,6,0x01,0x02,3,Mode,1,uint8,5,0|5,,,,0_Off,1_2_2_3,1\n"
    "1,7,0x03,,,Event Log,0,raw,,,,,,,1_1_1_6,0\n"
    "1,8,0x03,,,Operation Log,0,raw,,,,,,,1_1_1_6,0\n"
    "1,9,,0x04,1,Set only Log,0,raw,,,,,,,1_1_1_6,0\n";

class PageDescriptionTest : public QObject {
  Q_OBJECT
 private slots:
  void init() {
    const QString path = folder_.filePath("table.csv");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(kTable);
    file.close();
    catalogue_ = std::make_shared<varkel::ConfigParser>(path.toStdString());
    QVERIFY(catalogue_->ExtractConfigInfo());
    model_ = std::make_unique<varkel::Model>("table", catalogue_);
  }

  void RowsStandByPositionBehindTheirHeading() {
    QCOMPARE(varkel::PageTitles(*catalogue_), (QVariantList{"Page", "Empty page"}));
    const QVariantList pages = varkel::PageRows(*catalogue_);
    const auto row = [](const char* label, int kind, int group, int index) {
      return QVariant(QVariantList{label, kind, 0, group, index});
    };
    const QVariantList expected = {row("First", 0, 0, -1),     row("Ahead", 0, 0, 1),
                                   row("Same place", 0, 0, 2), row("Behind (mm)", 1, 0, 0),
                                   row("Second", 0, 1, -1),    row("Filter", 2, 1, 1),
                                   row("Mode", 3, 1, 2)};
    QCOMPARE(pages[0].toList(), expected);
    QVERIFY(pages[1].toList().isEmpty());
    QCOMPARE(varkel::DownloadableLogs(*catalogue_), QVariantList{"Event Log"});
  }

  void SwitchRowIsOneRowWithItsSwitchState() {
    const QVariantMap value = Map("Filter");
    QCOMPARE(value["switch_index"], "1");
    QCOMPARE(value["current_val"], "3");
    QCOMPARE(value["visible"], true);
    QCOMPARE(Map("Filter on")["visible"], false);
    QCOMPARE(value["edited"], false);
    model_->values.Edit(*catalogue_->FindByName("Filter on"), "0");
    QCOMPARE(Map("Filter")["edited"], true);
  }

  void MissingLabelsAreTheValues() {
    const QVariantMap mode = Map("Mode");
    QCOMPARE(mode["options"].toList(), (QVariantList{0, 5}));
    QCOMPARE(mode["varname_value_to_option"].toList(), (QVariantList{"Off", "5"}));
    QCOMPARE(mode["option_num"], 2);
  }

  void FailedLoadLeavesNoPagesAndSaysWhere() {
    ControllerFixture fixture;
    fixture.manager->InitConfigFileParser("../../no-model");
    QVERIFY(fixture.manager->level1List().isEmpty());
    QVERIFY(fixture.manager->myMap().isEmpty());
    QVERIFY(fixture.errors.isEmpty());  // at the start nobody would hear it yet
    const QString error = fixture.NextError();
    QVERIFY2(error.contains("no-model.csv"), qPrintable(error));
    QVERIFY(fixture.log.contains("ERROR " + error));
    fixture.manager->InitConfigFileParser();
    QVERIFY(!fixture.manager->level1List().isEmpty());
  }

 private:
  QVariantMap Map(const char* name) const {
    return varkel::VariableMap(*model_, *catalogue_->FindByName(name));
  }

  QTemporaryDir folder_;
  std::shared_ptr<varkel::ConfigParser> catalogue_;
  std::unique_ptr<varkel::Model> model_;
};

const RegisterTest<PageDescriptionTest> registered;

}  // namespace

#include "page_description_test.moc"
