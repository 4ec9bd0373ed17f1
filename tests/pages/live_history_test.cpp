#include "VarkelCore/src/pages/live_history.h"

#include "tests/values/value_table.h"

namespace varkel {
namespace {

using std::chrono::milliseconds;

TEST(LiveHistoryTest, SummarisesReadingsWithoutLosingDigits) {
  const struct {
    std::vector<std::string> readings;
    QString figures;
  } kCases[] = {
      {{"46.60", "47.60", "46.70"}, "46.6 47.6 46.967 46.7"},
      {{"0.95"}, "0.95 0.95 0.95 0.95"},
      {{"3000000000", "3000000900"}, "3000000000 3000000900 3000000450.0 3000000900"},
      {{"-250000", "250000"}, "-250000 250000 0 250000"},
  };
  for (const auto& [readings, figures] : kCases) {
    const auto model = test::ModelOf(
        {"Index=1;Get=0x01;VarName=Live;VarType=double;VarLen=8;TimerUpdate=1;FunctionModule=1_1_1_0"});
    VarInfo* const live = model->catalogue->FindByName("Live");
    LiveHistory history;
    int ms = 0;
    for (const std::string& text : readings) {
      model->values.Read({{live, text, {}}}, model->values.Now(), ValueStore::Time(milliseconds(++ms)));
      history.Follow(model, {live});
    }
    const QVariantMap summary = history.summary(QString::fromStdString(live->var_id));
    QStringList shown;
    for (const char* name : {"min", "max", "mean", "last"}) shown.append(summary[name].toString());
    EXPECT_EQ(shown.join(' '), figures);
  }
}

}  // namespace
}  // namespace varkel
