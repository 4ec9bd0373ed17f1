#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/state/plan_run.h"
#include "VarkelCore/src/state/state_reader.h"
#include "tests/simulator/sensor_rig.h"

namespace varkel::test {

class SilentReport : public UserReport {
 public:
  void Log(const std::string&, const std::string&) override {}
  void Bytes(const std::string&) override {}
  void Error(const std::string&) override {}
  void Success(const std::string&) override {}
};

inline constexpr char kTable[] = "./Config/varID/Quenta.csv";

/// A simulated sensor, a connected client, and a model that has not been read yet.
struct StateRig {
  StateRig() : model("Quenta", std::make_shared<ConfigParser>(kTable)) {
    model.catalogue->ExtractConfigInfo();
    sensor.Start();
    client = sim::Connect(sensor, 1, 1000);
  }

  StateReading Read() { return StateReader(report).Read(model, *client, StateVars(*model.catalogue)); }

  tl::expected<SetPlan, std::vector<PlanRefusal>> Plan(const std::vector<WantedValue>& wanted) {
    Read();
    return MakeSetPlan(model, wanted);
  }

  RunReport Apply(const std::vector<WantedValue>& wanted, const RunOptions& options = {},
                  const std::stop_token& stop = {}) {
    const auto plan = Plan(wanted);
    EXPECT_TRUE(plan) << (plan ? "" : plan.error().front().text);
    if (!plan) return {};
    sensor.ClearReceived();
    return PlanRun(report).Run(model, client, *plan, options, stop);
  }

  SilentReport report;
  sim::SimulatedSensor sensor{{.table_path = kTable}};
  Model model;
  std::shared_ptr<quarn::lidar::KtcClient> client;
};

/// Every change as "1-2 verified holds, ...".
inline std::string Verdicts(const RunReport& report) {
  std::string text;
  for (const ChangeOutcome& change : report.changes) {
    text += (text.empty() ? "" : ", ") + change.name + " " + VerdictName(change.verdict);
    if (change.verdict == Verdict::kRefused) text += " " + std::to_string(change.code);
    if (change.verdict == Verdict::kDiffers) text += " " + change.holds;
  }
  return text;
}

}  // namespace varkel::test
