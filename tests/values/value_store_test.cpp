#include "VarkelCore/src/values/value_store.h"

#include <algorithm>

#include "tests/values/value_table.h"

namespace varkel {
namespace {

using enum ValueOrigin;
using Bytes = std::vector<std::uint8_t>;

class ValueStoreTest : public testing::Test {
 protected:
  void Read(const char* name, const std::string& text, Bytes raw = {}) {
    values.Read({{&Var(name), text, std::move(raw)}}, values.Now());
  }
  SentCommand Command(const char* name, const std::string& text, Bytes bytes) {
    return {Var(name).set_cmd, {{&Var(name), text, std::move(bytes)}}, std::nullopt};
  }
  void Send(const SentCommand& command) { values.Sent(command, values.Now()); }
  VarInfo& Var(const char* name) { return *model->catalogue->FindByName(name); }
  ValueStore::Shown Shown(const char* name) { return values.Show(Var(name)); }
  void ExpectShown(const char* name, const char* text, ValueOrigin origin) {
    EXPECT_EQ(Shown(name).text, text) << name;
    EXPECT_STREQ(OriginName(Shown(name).origin), OriginName(origin)) << name;
  }
  std::vector<std::string> Changes() {
    std::vector<std::string> names;
    for (const VarInfo* var : values.TakeChanges()) names.push_back(var->var_name);
    std::sort(names.begin(), names.end());
    return names;
  }

  int reports = 0;
  const std::shared_ptr<Model> model = test::ModelOf(
      {test::ByteRow("Index=1;Set=0x02;VarName=Rate;DefaultValue=7;Coefficient=0.1;SetCoefficient=0.1;"
                     "FunctionModule=1_1_1_1"),
       test::ByteRow("Index=2;Set=0x02;VarName=Scaled;DefaultValue=1;Coefficient=0.5;SetCoefficient=1;"
                     "FunctionModule=1_1_2_1"),
       "Index=3;Get=0x01;VarName=SN;VarType=string;DefaultValue=none;VarLen=4;FunctionModule=1_1_3_0",
       test::ByteRow("Index=4;Get=0x23;Set=0x22;VarName=Channel;FunctionModule=1_1_4_5"),
       test::ByteRow("Index=5;VarName=Stray;DefaultValue=3;FunctionModule=1_1_5_1")},
      [this] { ++reports; });
  ValueStore& values = model->values;
};

TEST_F(ValueStoreTest, RecordsTheOriginOfATextThroughASave) {
  ExpectShown("Rate", "7", kDefault);
  Read("Rate", "1.30", {13});
  ExpectShown("Rate", "1.30", kRead);
  EXPECT_EQ(Shown("Rate").raw, Bytes{13});
  EXPECT_TRUE(Shown("Rate").read_time);
  values.Edit(Var("Rate"), "1.5");
  ExpectShown("Rate", "1.5", kEdited);
  Read("Rate", "1.40", {14});  // never overwrites the user's edit
  ExpectShown("Rate", "1.5", kEdited);
  const SentCommand command = Command("Rate", "1.5", {15});
  Send(command);
  ExpectShown("Rate", "1.5", kEdited);  // the save may still fail
  values.Saved({&command, 1});
  ExpectShown("Rate", "1.5", kSent);
  EXPECT_FALSE(values.Verify(Var("Rate"))->read_back);
  Read("Rate", "1.40", {14});
  ExpectShown("Rate", "1.40", kDiffers);
  EXPECT_EQ(values.Verify(Var("Rate"))->sent, "1.5");
  EXPECT_EQ(values.Verify(Var("Rate"))->read_back, "1.40");
  EXPECT_FALSE(values.Verify(Var("Rate"))->equal);
  Read("Rate", "1.50", {15});  // the same bytes
  ExpectShown("Rate", "1.50", kVerified);
  EXPECT_TRUE(values.Verify(Var("Rate"))->equal);
  Read("Rate", "1.60", {16});
  ExpectShown("Rate", "1.60", kRead);
}

TEST_F(ValueStoreTest, ReadsBackWithAnotherScale) {
  for (const auto& [text, origin] : {std::pair("3.00", kVerified), {"5.00", kDiffers}, {"x", kDiffers}}) {
    Send(Command("Scaled", "3", {3}));
    Read("Scaled", text, {6});
    ExpectShown("Scaled", text, origin);
  }
}

TEST_F(ValueStoreTest, AnUneditedFieldIsNotAChange) {
  Read("Rate", "1.30", {13});
  Send(Command("Rate", "1.30", {13}));
  ExpectShown("Rate", "1.30", kRead);
  EXPECT_EQ(values.FieldToSend(Var("Rate")).raw, Bytes{13});
  Read("Rate", "1.20", {12});
  ExpectShown("Rate", "1.20", kDiffers);  // the sensor did not keep it
}

// The value that Cancel restores, depending on what happened before the edit.
TEST_F(ValueStoreTest, CancelRestoresWhatTheSensorReported) {
  const struct {
    const char* name;
    std::function<void()> before;
    const char* text;
  } kCases[] = {
      {"Rate", [] {}, "7"},
      {"Rate", [this] { Read("Rate", "1.30"); }, "1.30"},
      {"Rate", [this] { values.Edit(Var("Rate"), "9"), Read("Rate", "1.40"); }, "1.40"},
      {"Rate", [this] { Send(Command("Rate", "2", {20})); }, "2"},  // the sensor accepted it
      {"SN", [this] { values.SerialNumberUnknown(); }, "xxxxxxxx"},
      {"Stray", [] {}, "3"},  // can be edited, but not saved
  };
  for (const auto& c : kCases) {
    c.before();
    values.Edit(Var(c.name), "99");
    values.Cancel();
    EXPECT_EQ(Shown(c.name).text, c.text);
    EXPECT_FALSE(values.IsEdited(Var(c.name)));
    EXPECT_EQ(values.pending_count(), 0U);
  }
}

TEST_F(ValueStoreTest, FieldOfViewFollowsTheSameRules) {
  FovAngles reported = kDefaultFov;
  reported[0] = 10;
  reported[4] = 40;
  values.ReadFov(reported, values.Now());
  values.EditFov(4, 45);
  EXPECT_TRUE(values.IsPending(kFovSetCommand) && Shown("Channel").edited);
  values.ReadFov(reported, values.Now());
  EXPECT_EQ(values.Fov()[4], 45);
  EXPECT_TRUE(values.Cancel());
  EXPECT_EQ(values.Fov(), reported);
  EXPECT_FALSE(values.Cancel());

  values.EditFov(4, 45);
  values.Edit(Var("Channel"), "2");
  EXPECT_EQ(values.pending_count(), 1U);
  SentCommand command = Command("Channel", "2", {2});
  command.fov = values.Fov();
  values.EditFov(4, 46);  // while the page is being saved
  Send(command);
  values.Saved({&command, 1});
  EXPECT_TRUE(values.IsPending(kFovSetCommand) && !values.IsEdited(Var("Channel")));
  values.Cancel();
  EXPECT_EQ(values.Fov()[4], 45);
  values.Disconnected();
  EXPECT_EQ(values.Fov(), (FovAngles{0, 0, 0, 0, 45, 360, 360, 360, 360, 360}));
  EXPECT_FALSE(values.IsFovRead());
}

TEST_F(ValueStoreTest, LateRepliesAreDropped) {
  const auto before = values.Now();
  Send(Command("Rate", "2", {20}));
  values.Read({{&Var("Rate"), "7", {}}}, before);  // requested before the command was sent
  ExpectShown("Rate", "2", kSent);
  values.Disconnected();
  values.SerialNumberUnknown();
  const FovAngles turned = {1, 2, 3, 4, 5};
  values.Read({{&Var("SN"), "SN-1", {}}}, before);
  values.ReadFov(turned, before);
  values.Sent(Command("Rate", "3", {30}), before);
  ExpectShown("SN", "xxxxxxxx", kDefault);
  ExpectShown("Rate", "2", kSent);
  EXPECT_EQ(values.Fov(), kDefaultFov);
}

TEST_F(ValueStoreTest, AnotherSensorHasReportedNothing) {
  Read("Rate", "1.30", {13});
  EXPECT_TRUE(values.IsRead(Var("Rate")));
  const auto now = values.Now();
  EXPECT_FALSE(values.IsRead(Var("Rate"), now));
  values.Edit(Var("Scaled"), "2");
  values.SensorChanged();
  EXPECT_FALSE(values.IsRead(Var("Rate")));
  EXPECT_TRUE(Shown("Rate").stale);
  EXPECT_TRUE(values.IsEdited(Var("Scaled"))) << "edits made before the connection are for it";
  EXPECT_FALSE(values.Verify(Var("Rate")));
  values.Disconnected();
  ExpectShown("Scaled", "1", kDefault);
  EXPECT_EQ(values.pending_count(), 0U);
}

TEST_F(ValueStoreTest, ReportsExactlyWhatAnEventChanged) {
  using Names = std::vector<std::string>;
  values.Edit(Var("Rate"), "7");  // unchanged
  EXPECT_EQ(reports, 0);
  Read("Rate", "8");
  values.Edit(Var("Rate"), "9");
  values.Edit(Var("Scaled"), "9");
  EXPECT_EQ(reports, 1);
  EXPECT_EQ(Changes(), (Names{"Rate", "Scaled"}));
  values.EditFov(0, 5);
  EXPECT_EQ(Changes(), Names{"Channel"});
  values.Cancel();
  EXPECT_EQ(Changes(), (Names{"Channel", "Rate", "Scaled"}));
  values.SerialNumberUnknown();
  EXPECT_EQ(Changes(), Names{"SN"});
  EXPECT_EQ(reports, 4);
  EXPECT_TRUE(Changes().empty());
}

}  // namespace
}  // namespace varkel
