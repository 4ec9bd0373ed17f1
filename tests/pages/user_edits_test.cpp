#include "VarkelCore/src/pages/user_edits.h"

#include <functional>

#include "VarkelCore/src/pages/save_check.h"
#include "tests/values/value_table.h"

namespace varkel {
namespace {

class UserEditsTest : public testing::Test {
 protected:
  VarInfo& Var(const char* name) const { return *model->catalogue->FindByName(name); }
  void Edit(const char* name, const char* text) {
    VarInfo& var = Var(name);
    edits.Do(model, {&var}, [&] { model->values.Edit(var, text); });
  }
  void Turn(std::size_t angle, float degrees) {
    edits.Do(model, {angle}, [&] { model->values.EditFov(angle, degrees); });
  }
  /// "Rate Slow>Fast, ...".
  QString Listed() const {
    QStringList texts;
    for (const QVariant& entry : edits.all()) {
      const QVariantMap map = entry.toMap();
      texts << map["label"].toString() + ' ' + map["from"].toString() + '>' + map["to"].toString();
    }
    return texts.join(", ");
  }
  QString Key(int entry) const { return edits.all().at(entry).toMap()["key"].toString(); }
  SentCommand Send(const char* name, const char* text, std::uint8_t byte) {
    SentCommand command{Var(name).set_cmd, {{&Var(name), text, {byte}}}, std::nullopt};
    model->values.Sent(command, model->values.Now());
    return command;
  }
  void Read(const char* name, const char* text, std::uint8_t byte) {
    model->values.Read({{&Var(name), text, {byte}}}, model->values.Now());
  }

  const std::shared_ptr<Model> model = test::ModelOf(
      {"Index=1;Get=0x01;Set=0x02;VarName=Rate;VarType=uint8;DefaultValue=7;VarLen=1;Options=7|8;"
       "OptionDescription=7_Slow\n8_Fast;FunctionModule=1_1_1_3",
       "Index=2;Get=0x01;Set=0x02;VarName=On;VarType=uint8;DefaultValue=1;VarLen=1;FunctionModule=1_1_2_2_2",
       "Index=3;Get=0x01;Set=0x02;VarName=Filter;VarType=uint8;DefaultValue=3;VarLen=1;FunctionModule=1_1_2_"
       "2",
       "Index=4;Get=0x23;Set=0x22;VarName=Channel;VarType=uint8;DefaultValue=0;VarLen=1;"
       "FunctionModule=1_1_3_5"});
  int reported = 0;
  UserEdits edits{[this] { return model; }, [this] { ++reported; }};
};

TEST_F(UserEditsTest, StepsGoBackAndForthOneByOne) {
  const char* const all = "Rate Slow>Fast, On 1>0, Filter 3>0, Channel, start 2 0.0>45.5";
  Edit("Rate", "8");
  Edit("Rate", "8");  // not an edit
  Edit("On", "0");
  Edit("Filter", "0");  // the same click
  Turn(1, 45.5F);
  EXPECT_EQ(Listed(), all);
  EXPECT_EQ(edits.counts(), QVariantList{3});  // rows
  int row = -1;
  QObject::connect(&edits, &UserEdits::stepped, &edits, [&row](int, int shown) { row = shown; });
  const struct {
    const char* listed;
    int row;
  } undone[] = {{"Rate Slow>Fast, On 1>0, Filter 3>0", 3}, {"Rate Slow>Fast", 2}, {"", 1}};
  for (const auto& step : undone) {
    EXPECT_EQ(edits.undo(), 0);
    EXPECT_EQ(Listed(), step.listed);
    EXPECT_EQ(row, step.row);
  }
  EXPECT_EQ(edits.undo(), -1);
  EXPECT_FALSE(edits.hasCommands(0));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(edits.redo(), 0);
  EXPECT_EQ(edits.redo(), -1);
  EXPECT_EQ(Listed(), all);
  EXPECT_EQ(reported, 6);
}

TEST_F(UserEditsTest, OneIsRevertedAlone) {
  Read("Rate", "7", 7);
  Edit("Rate", "8");
  Turn(9, 90);
  edits.takeBack(Key(1));
  EXPECT_EQ(Listed(), "Rate Slow>Fast");
  EXPECT_FALSE(model->values.IsPending(kFovSetCommand));
  edits.takeBack(Key(0));
  EXPECT_TRUE(Listed().isEmpty() && !edits.hasCommands(0));
  edits.undo();
  EXPECT_EQ(Listed(), "Rate Slow>Fast");
}

TEST_F(UserEditsTest, SavedEditsAreNotUndone) {
  Edit("Filter", "5");
  Edit("Rate", "8");
  const SentCommand command = Send("Rate", "8", 8);
  model->values.Saved({&command, 1});
  EXPECT_EQ(edits.undo(), 0);
  EXPECT_TRUE(Listed().isEmpty()) << "the edit before it";
  Edit("Rate", "7");
  edits.undo();
  EXPECT_EQ(model->catalogue->CurrentValue(Var("Rate")), "8");
}

TEST_F(UserEditsTest, RefusalShowsUntilTheEditChanges) {
  const auto refusal = [this] { return model->values.Show(Var("Rate")).refusal; };
  const std::function<void()> ends[] = {[this] { Edit("Rate", "7"); }, [this] { edits.takeBack(Key(0)); },
                                        [this] { model->values.Cancel(); }};
  for (const auto& end : ends) {
    Edit("Rate", "8");
    model->values.Refused("0x02", 5);
    EXPECT_EQ(refusal(), 5);
    EXPECT_FALSE(model->values.Show(Var("Filter")).refusal);
    end();
    EXPECT_FALSE(refusal());
    model->values.Cancel();
  }
}

TEST_F(UserEditsTest, ReadingBackReportsTheOutcomeOfASave) {
  SaveCheck check;
  const auto saved = [&](SavedEdits sent) {
    for (const VarInfo* var : sent.vars) Send(var->var_name.c_str(), "8", 8);
    check.Saved(model, 0, std::move(sent));
  };
  EXPECT_FALSE(check.AfterReading(false));
  saved({{&Var("Rate"), &Var("Filter")}, false});
  Read("Rate", "8", 8);
  EXPECT_FALSE(check.AfterReading(true));
  Read("Filter", "7", 7);
  auto outcome = check.AfterReading(true);
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->text, "1 of 2 verified, Filter holds 7 instead of 8");
  EXPECT_TRUE(outcome->differs && !outcome->good);
  EXPECT_FALSE(check.AfterReading(false)) << "once";

  saved({{&Var("Rate")}, false});
  outcome = check.AfterReading(false);
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->text, "0 of 1 verified, Rate could not be read back");
  EXPECT_FALSE(outcome->differs || outcome->good);

  FovAngles angles = kDefaultFov;
  angles[2] = 30;
  model->values.Sent({kFovSetCommand, {}, angles}, model->values.Now());
  saved({{}, true});
  model->values.ReadFov(kDefaultFov, model->values.Now());
  outcome = check.AfterReading(false);
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->text,
            "0 of 1 verified, Field of view holds 0.0 0.0 0.0 0.0 0.0 instead of 0.0 0.0 30.0 0.0 0.0");
}

}  // namespace
}  // namespace varkel
