#include "VarkelCore/src/state/sensor_change.h"

#include <utility>

namespace varkel {

namespace {

RunReport NothingSent(const SetPlan& plan) {
  RunReport report;
  for (const PlannedCommand& command : plan.commands) {
    for (const PlannedField& field : command.fields) report.changes.push_back(NotSent(field));
  }
  return report;
}

}  // namespace

ChangeResult ChangeSensor(const ConnectedSensor& sensor, const ChangeRequest& request,
                          const SnapshotFolder& snapshots, UserReport& report, const std::stop_token& stop) {
  ChangeResult result;
  Model& model = sensor.model;
  StateReading reading =
      StateReader(report).Read(model, *sensor.client, StateVars(*model.catalogue), stop, request.progress);
  result.present = std::move(reading.state);
  result.reading = reading.end;
  if (reading.end != ReadEnd::kComplete) return result;
  const auto wanted = request.wanted(model, result.present);
  if (!wanted) {
    result.refusals = wanted.error();
    return result;
  }
  const auto plan = MakeSetPlan(model, *wanted, request.force);
  if (!plan) {
    result.refusals = plan.error();
    return result;
  }
  result.run = NothingSent(*plan);
  if (plan->is_empty() || request.check_only) return result;
  if (request.is_agreed && !request.is_agreed(result.run)) {
    result.fault = "The sensor has changed since this was planned, so nothing was written. Plan it again.";
    return result;
  }
  result.present.reason = request.reason;
  const auto snapshot = snapshots.Save(result.present);
  if (!snapshot) {
    result.fault = snapshot.error();
    return result;
  }
  result.snapshot = snapshot->path;
  RunOptions options;
  options.stop_on_refusal = request.stop_on_refusal;
  options.move = {sensor.address, sensor.connect, request.move_timeout};
  options.progress = request.progress;
  result.run = PlanRun(report).Run(model, sensor.client, *plan, options, stop);
  return result;
}

}  // namespace varkel
