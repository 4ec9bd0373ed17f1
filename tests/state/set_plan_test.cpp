#include "VarkelCore/src/state/set_plan.h"

#include "tests/state/state_rig.h"
#include "tests/values/value_table.h"

namespace varkel {
namespace {

TEST(SetPlan, RefusesBeforeAnythingIsSent) {
  test::StateRig rig;
  rig.Read();
  const struct {
    const char* key;
    const char* text;
    RefusalKind kind;
  } cases[] = {
      {"No Such", "1", RefusalKind::kUnknown},
      {"SN", "1", RefusalKind::kNotWritable},
      {"Restart", "1", RefusalKind::kNotWritable},
      {"Firmware Upgrade", "1", RefusalKind::kNotWritable},
      {"Channel Field of View start 1", "360.5", RefusalKind::kOutOfRange},
      {"15-1-start-1", "x", RefusalKind::kNotANumber},
      {"15-1-end-1", "90", RefusalKind::kNotWritable},
      {"15-1-start-2", "10", RefusalKind::kNotRead},
      {"VLAN ID", "12abc", RefusalKind::kNotANumber},
      {"VLAN ID", "", RefusalKind::kNotANumber},
      {"Receiver Gain", "nan", RefusalKind::kNotANumber},
      {"VLAN ID", "70000", RefusalKind::kOutOfRange},
      {"Maximum Range", "20e9", RefusalKind::kOutOfRange},
      {"PTP Announce Interval", "5", RefusalKind::kOutOfRange},
      {"Spin Rate", "601", RefusalKind::kOutOfRange},
      {"Sensor IP", "192.168.1", RefusalKind::kOutOfRange},
  };
  for (const auto& [key, text, kind] : cases) {
    const std::vector<WantedValue> wanted = {{"Spin Rate", "300", {}}, {key, text, {}}};
    const auto plan = MakeSetPlan(rig.model, wanted);
    ASSERT_FALSE(plan) << key << "=" << text;
    EXPECT_EQ(plan.error().front().kind, std::string(key) == "Spin Rate" ? RefusalKind::kDuplicate : kind)
        << plan.error().front().text;
  }
}

TEST(SetPlan, GathersFieldsByCommandAndSendsTheAddressLast) {
  test::StateRig rig;
  const auto plan = rig.Plan({{"7-1", "10.0.0.7", {}},
                              {"Spin Rate", " 1200 ", {}},
                              {"Return Mode", "2", {}},  // unchanged
                              {"Operating Mode", "1", {}}});
  ASSERT_TRUE(plan);
  ASSERT_EQ(plan->commands.size(), 2U);
  EXPECT_EQ(plan->commands[0].set_cmd, "0x41");
  ASSERT_EQ(plan->commands[0].fields.size(), 2U);
  EXPECT_EQ(plan->commands[0].fields[0].old_text, "600");
  EXPECT_EQ(plan->commands[0].fields[0].new_text, "1200");
  EXPECT_EQ(plan->commands[1].set_cmd, "0x21");
  EXPECT_EQ(rig.model.values.pending_count(), 0U);
}

TEST(SetPlan, FieldsThatCouldNotBeReadAreNotOverwritten) {
  test::StateRig rig;
  rig.sensor.AddFault("0x40=silence#1");
  rig.Read();
  const std::vector<WantedValue> wanted = {{"Spin Rate", "300", {}}};
  const auto plan = MakeSetPlan(rig.model, wanted);
  ASSERT_FALSE(plan);
  EXPECT_EQ(plan.error().front().kind, RefusalKind::kNotRead);
  EXPECT_TRUE(MakeSetPlan(rig.model, wanted, Force::kYes));
}

TEST(SetPlan, AnAmbiguousNameIsRefused) {
  const auto model = test::ModelOf({"Index=1;Get=0x01;Set=0x02;VarName=Mode;VarType=uint8;VarLen=1",
                                    "Index=2;Get=0x01;Set=0x02;VarName=Mode;VarType=uint8;VarLen=1"});
  const std::vector<WantedValue> wanted = {{"Mode", "1", {}}};
  EXPECT_EQ(MakeSetPlan(*model, wanted).error().front().text,
            "Several variables are named \"Mode\": 1-1, 1-2. Use the identifier.");
}

TEST(SetPlan, AStateOfAnotherModelOrTableIsRefusedUnlessForced) {
  test::StateRig rig;
  SensorState state = rig.Read().state;
  const std::size_t all = WantedFromState(rig.model, state)->size();
  EXPECT_EQ(all, 51U);
  state.values.front().name = "Gone";
  EXPECT_EQ(WantedFromState(rig.model, state).error().front().kind, RefusalKind::kUnknown);
  state.model = "Another";
  EXPECT_EQ(WantedFromState(rig.model, state).error().front().kind, RefusalKind::kOtherModel);
  EXPECT_EQ(WantedFromState(rig.model, state, Force::kYes)->size(), all);
}

}  // namespace
}  // namespace varkel
