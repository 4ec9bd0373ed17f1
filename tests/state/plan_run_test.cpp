#include "VarkelCore/src/state/plan_run.h"

#include <algorithm>

#include "VarkelCore/src/state/state_compare.h"
#include "tests/state/state_rig.h"

namespace varkel {
namespace {

using test::StateRig;
using test::Verdicts;

const std::vector<WantedValue> kThreeCommands = {
    {"Spin Rate", "300", {}}, {"Sync Angle", "45", {}}, {"GPS UDP Port", "2000", {}}};

TEST(PlanRun, WritesOnlyDifferencesAndNothingTheSecondTime) {
  StateRig rig;
  const std::vector<WantedValue> wanted = {{"Spin Rate", "300", {}},
                                           {"Receiver Gain", "1.234567", {}},
                                           {"Detection Threshold", "12.7", {}},
                                           {"Safety Mode", "2", {}}};
  const RunReport report = rig.Apply(wanted);
  EXPECT_TRUE(report.is_all_verified()) << Verdicts(report);
  EXPECT_EQ(rig.sensor.ValueText("Spin Rate"), "300");
  EXPECT_EQ(rig.sensor.ValueText("Return Mode"), "2") << "is sent with the sensor's own value";
  EXPECT_EQ(report.changes.front().old_text, "600");
  const auto again = rig.Plan(wanted);
  ASSERT_TRUE(again);
  EXPECT_TRUE(again->is_empty());
}

TEST(PlanRun, EachChangeGetsItsVerdict) {
  const struct {
    const char* fault;
    bool stop_on_refusal;
    const char* verdicts;
    RunEnd end;
  } cases[] = {
      {"0x45=error:7", false, "Spin Rate verified, Sync Angle refused 7, GPS UDP Port verified",
       RunEnd::kComplete},
      {"0x45=error:7", true, "Spin Rate verified, Sync Angle refused 7, GPS UDP Port not-sent",
       RunEnd::kEndedByRefusal},
      {"0x45=clamp:40", false, "Spin Rate verified, Sync Angle differs 40, GPS UDP Port verified",
       RunEnd::kComplete},
      {"0x45=silence", false, "Spin Rate verified, Sync Angle verified, GPS UDP Port verified",
       RunEnd::kComplete},
      {"0x45=close:0", false, "Spin Rate verified, Sync Angle unconfirmed, GPS UDP Port not-sent",
       RunEnd::kConnectionLost},
      {"0x44=error:3#2", false, "Spin Rate verified, Sync Angle unconfirmed, GPS UDP Port verified",
       RunEnd::kComplete},
  };
  for (const auto& [fault, stop_on_refusal, verdicts, end] : cases) {
    StateRig rig;
    rig.sensor.AddFault(fault);
    const RunReport report = rig.Apply(kThreeCommands, {.stop_on_refusal = stop_on_refusal});
    EXPECT_EQ(Verdicts(report), verdicts) << fault;
    EXPECT_EQ(report.end, end) << fault << ": " << report.detail;
    EXPECT_EQ(report.detail.empty(), end == RunEnd::kComplete);
    EXPECT_EQ(rig.model.values.pending_count(), 0U);
  }
}

TEST(PlanRun, AStopEndsItBeforeTheNextExchange) {
  StateRig rig;
  std::stop_source stop;
  RunOptions options;
  options.progress = [&](std::size_t done, std::size_t) {
    if (done == 1) stop.request_stop();
  };
  const RunReport report = rig.Apply(kThreeCommands, options, stop.get_token());
  EXPECT_EQ(report.end, RunEnd::kStopped);
  EXPECT_EQ(Verdicts(report), "Spin Rate verified, Sync Angle not-sent, GPS UDP Port not-sent");
  EXPECT_EQ(rig.sensor.Received(0x45).size(), 0U);
}

TEST(PlanRun, ASnapshotRestoresTheBytesOfRoundedTexts) {
  StateRig rig;
  ASSERT_TRUE(
      rig.Apply({{"Minimum Range", "0.123456", {}}, {"Receiver Gain", "2.345678", {}}}).is_all_verified());
  const SensorState before = rig.Read().state;
  ASSERT_TRUE(rig.Apply({{"Minimum Range", "3", {}}, {"Receiver Gain", "-1", {}}}).is_all_verified());
  rig.Read();
  const RunReport report = rig.Apply(*WantedFromState(rig.model, before));
  EXPECT_EQ(Verdicts(report), "Minimum Range verified, Receiver Gain verified");
  for (const Difference& difference : CompareStates(before, rig.Read().state).differences) {
    EXPECT_TRUE(rig.model.catalogue->FindById(difference.id)->timer_update) << difference.name;
  }
}

TEST(PlanRun, RestoresTheFieldOfView) {
  StateRig rig;
  const auto angles = [](const std::string& channel, std::vector<std::string> starts) {
    std::vector<WantedValue> wanted = {{"Channel Field of View", channel, {}}};
    for (std::size_t i = 0; i < starts.size(); ++i) {
      wanted.push_back({"15-1-start-" + std::to_string(i + 1), starts[i], {}});
    }
    return wanted;
  };
  ASSERT_TRUE(rig.Apply(angles("5", {"10.0", "20.5", "30", "40", "350"})).is_all_verified());
  const SensorState before = rig.Read().state;
  // A sensor reports only the sectors of its channel, so the other angles can't be verified.
  EXPECT_EQ(Verdicts(rig.Apply(angles("2", {"11", "22.2", "33"}))),
            "Channel Field of View verified, Channel Field of View start 1 verified, "
            "Channel Field of View start 2 verified, Channel Field of View start 3 unconfirmed");
  const SensorState after = rig.Read().state;
  const auto differences = CompareStates(before, after).differences;
  EXPECT_EQ(std::count_if(differences.begin(), differences.end(),
                          [](const Difference& one) { return one.id.starts_with("15-1"); }),
            1 + 2 + 6);
  const RunReport report = rig.Apply(*WantedFromState(rig.model, before));
  EXPECT_TRUE(report.is_all_verified()) << Verdicts(report);
  EXPECT_TRUE(CompareStates(before, rig.Read().state).is_equal());
  EXPECT_EQ(rig.sensor.Received(0x22).back().payload,
            (std::vector<std::uint8_t>{5, 0, 100, 0, 205, 0x01, 0x2C, 0x01, 0x90, 0x0D, 0xAC}));
}

TEST(PlanRun, FollowsTheSensorToItsNewAddress) {
  StateRig rig;
  sim::SimulatedSensor moved({.table_path = test::kTable});
  moved.Start();
  const std::string port = std::to_string(moved.port());
  moved.SetValue("KTC Port", port);
  RunOptions options;
  options.move = {{"127.0.0.1", rig.sensor.port()},
                  [&](const SensorAddress& address, const std::stop_token&) {
                    EXPECT_EQ(address.host, "127.0.0.1");
                    EXPECT_EQ(address.port, moved.port());
                    return std::shared_ptr<quarn::lidar::KtcClient>(sim::Connect(moved, 1));
                  },
                  std::chrono::seconds(10)};
  rig.sensor.AddFault("0x21=silence");  // it moved before it could answer
  const RunReport report = rig.Apply({{"KTC Port", port, {}}, {"Spin Rate", "300", {}}}, options);
  EXPECT_EQ(Verdicts(report), "Spin Rate verified, KTC Port verified");
  EXPECT_GE(moved.Received(0x08).size(), 1U);
}

TEST(PlanRun, ExplainsWhyTheSensorIsNotFound) {
  StateRig rig;
  int tries = 0;
  RunOptions options;
  options.move = {{"127.0.0.1", 9347},
                  [&](const SensorAddress&, const std::stop_token&) {
                    ++tries;
                    return nullptr;
                  },
                  std::chrono::milliseconds(300)};
  RunReport report = rig.Apply({{"Sensor IP", "127.0.0.9", {}}}, options);
  EXPECT_EQ(report.end, RunEnd::kNotReached);
  EXPECT_GT(tries, 1);
  EXPECT_NE(report.detail.find("from 127.0.0.1:9347 to 127.0.0.9:9347"), std::string::npos) << report.detail;
  EXPECT_NE(report.detail.find("127.0.0.1/8"), std::string::npos) << report.detail;
  EXPECT_NE(report.detail.find("one of them is in the subnet"), std::string::npos) << report.detail;
  EXPECT_NE(report.detail.find("still answers at 127.0.0.1:9347"), std::string::npos) << report.detail;
  report = rig.Apply({{"Sensor IP", "203.0.113.9", {}}}, options);
  EXPECT_NE(report.detail.find("none of them is"), std::string::npos) << report.detail;
}

}  // namespace
}  // namespace varkel
