#include "VarkelCore/src/pages/page_model.h"

#include <QAbstractItemModelTester>

#include "VarkelCore/src/pages/page_description.h"
#include "tests/values/value_table.h"

namespace varkel {
namespace {

class PageModelTest : public testing::Test {
 protected:
  PageModelTest() {
    QObject::connect(&rows, &QAbstractItemModel::dataChanged, [this](const auto& first, const auto& last) {
      for (int row = first.row(); row <= last.row(); ++row) {
        changed.append(rows.index(row).data(PageModel::kLabel).toString());
      }
    });
  }
  VarInfo& Var(const char* name) { return *model->catalogue->FindByName(name); }
  QVariant Data(const char* label, const char* role) {
    for (int row = 0; row < rows.rowCount(); ++row) {
      const QModelIndex index = rows.index(row);
      if (index.data(PageModel::kLabel) == label) return index.data(rows.roleNames().key(role));
    }
    return {};
  }
  QStringList Changed() {
    rows.ShowChanges(model->values.TakeChanges());
    return std::exchange(changed, {});
  }

  const std::shared_ptr<Model> model = test::ModelOf(
      {test::ByteRow(
           "Index=1;Set=0x02;VarName=Last;DefaultValue=7;Options=1~9;Unit=mm;Permission=1;TimerUpdate=1;"
           "FunctionModule=1_1_5_1"),
       test::ByteRow("Index=2;Set=0x02;VarName=Filter on;DefaultValue=1;FunctionModule=1_1_2_2_2"),
       test::ByteRow("Index=3;Set=0x02;VarName=Filter;DefaultValue=3;FunctionModule=1_1_2_2"),
       test::ByteRow("Index=4;Get=0x23;Set=0x22;VarName=Channel;Options=0|1;OptionDescription=0_Off;"
                     "FunctionModule=1_1_3_5"),
       test::ByteRow("Index=5;VarName=First;FunctionModule=1_1_1_0"),
       "Index=6;Get=0x03;VarName=Event Log;VarType=raw;FunctionModule=1_1_1_6",
       "Index=7;Get=0x03;VarName=Operation Log;VarType=raw;FunctionModule=1_1_1_6",
       "Index=8;Set=0x04;VarName=Set only Log;VarType=raw;FunctionModule=1_1_1_6"});
  PageModel rows{model, 0};
  QStringList changed;
};

TEST_F(PageModelTest, HasTheRowsOfThePage) {
  const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::Fatal);
  QStringList shown;
  for (int row = 0; row < rows.rowCount(); ++row) {
    const QModelIndex at = rows.index(row);
    shown.append(at.data(PageModel::kLabel).toString() + at.data(PageModel::kKind).toString() + '/' +
                 at.data(PageModel::kVariable).toString());
  }
  EXPECT_EQ(shown, (QStringList{"Group-1/-1", "First0/4", "Filter2/2", "Channel5/3", "Last (mm)1/0"}));
  EXPECT_EQ(PageModel(model, 1).rowCount(), 0);
  const struct {
    const char* role;
    QVariant value;
  } kCases[] = {{"name", "Last"},  {"text", "7"},     {"origin", "default"}, {"readTime", ""},
                {"edited", false}, {"live", true},    {"writable", true},    {"rangeMin", 1},
                {"rangeMax", 9},   {"unit", " (mm)"}, {"type", "uint8"},     {"rawHex", ""},
                {"sentText", ""},  {"verdict", ""},   {"varId", "1-1"},      {"stale", false},
                {"group", 0}};
  for (const auto& [role, value] : kCases) EXPECT_EQ(Data("Last (mm)", role), value) << role;
  EXPECT_EQ(Data("Filter", "switchText"), "1");
  EXPECT_EQ(Data("Channel", "optionLabels"), QVariant(QVariantList{"Off", "1"}));
  EXPECT_FALSE(Data("Group", "text").isValid());
}

// Hosts and older windows use these instead of the model.
TEST_F(PageModelTest, ListsAndMapsAgree) {
  const ConfigParser& catalogue = *model->catalogue;
  EXPECT_EQ(PageTitles(catalogue), QVariantList{"Page"});
  const QVariantList listed = PageRows(catalogue)[0].toList();
  EXPECT_EQ(listed[0], QVariant(QVariantList{"Group", 0, 0, 0, -1}));
  EXPECT_EQ(listed[4], QVariant(QVariantList{"Last (mm)", 1, 0, 0, 0}));
  EXPECT_EQ(DownloadableLogs(catalogue), QVariantList{"Event Log"});
  model->values.Edit(Var("Filter on"), "0");
  const QVariantMap filter = VariableMap(*model, Var("Filter"));
  const struct {
    const char* key;
    QVariant value;
  } kCases[] = {{"switch_index", "0"}, {"current_val", "3"}, {"visible", true}, {"edited", true},
                {"origin", "default"}, {"read_time", ""},    {"type", 2}};
  for (const auto& [key, value] : kCases) EXPECT_EQ(filter[key], value) << key;
  EXPECT_EQ(VariableMap(*model, Var("Filter on"))["visible"], false);
  const QVariantMap channel = VariableMaps(*model)[0].toList()[0].toList()[3].toMap();
  EXPECT_EQ(channel["options"].toList(), (QVariantList{0, 1}));
  EXPECT_EQ(channel["varname_value_to_option"].toList(), (QVariantList{"Off", "1"}));
}

TEST_F(PageModelTest, ReportsExactlyTheRowsThatAnEventChanged) {
  ValueStore& values = model->values;
  const auto time = ValueStore::Time(std::chrono::milliseconds(1500));
  values.Read({{&Var("Last"), "8", {8}}}, values.Now(), time);
  EXPECT_EQ(Changed(), QStringList{"Last (mm)"});
  EXPECT_EQ(Data("Last (mm)", "readTime"), "1970-01-01T00:00:01.500Z");
  EXPECT_EQ(Data("Last (mm)", "rawHex"), "08");
  values.Edit(Var("Filter on"), "0");
  EXPECT_EQ(Changed(), QStringList{"Filter"});
  EXPECT_EQ(Data("Filter", "edited"), true);
  values.EditFov(0, 5);
  EXPECT_EQ(Changed(), QStringList{"Channel"});
  EXPECT_EQ(Data("Channel", "edited"), true);
  EXPECT_EQ(Data("Channel", "angles").toStringList().value(0), "5.0");
  EXPECT_EQ(rows.edits(), 2);
  EXPECT_EQ(PageModel(model, 0).edits(), 2);  // edited before the page was created
  values.Edit(Var("First"), "1");
  values.Cancel();
  EXPECT_EQ(Changed(), (QStringList{"First", "Filter", "Channel"}));
  EXPECT_EQ(rows.edits(), 0);
  values.Sent({"0x02", {{&Var("Last"), "9", {9}}}, std::nullopt}, values.Now());
  EXPECT_EQ(Changed(), QStringList{"Last (mm)"});
  EXPECT_EQ(Data("Last (mm)", "sentText"), "9");
  EXPECT_TRUE(Changed().isEmpty());
}

TEST_F(PageModelTest, VerdictHoldsUntilTheTextChanges) {
  model->values.Edit(Var("Last"), "10");
  Changed();
  rows.SetVerdict(Var("Last"), "is out of range");
  EXPECT_EQ(Changed(), QStringList{"Last (mm)"});
  model->values.Read({{&Var("Last"), "8", {8}}}, model->values.Now());
  Changed();
  EXPECT_EQ(Data("Last (mm)", "verdict"), "is out of range");
  for (const char* text : {"9", "10"}) {
    model->values.Edit(Var("Last"), text);
    Changed();
    EXPECT_EQ(Data("Last (mm)", "verdict"), "");
  }
}

}  // namespace
}  // namespace varkel
