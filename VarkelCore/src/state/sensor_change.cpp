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

ChangeResult ChangeSensor(SensorLink& link, const ChangeRequest& request, const SnapshotFolder& snapshots,
                          UserReport& report, const std::stop_token& stop) {
  ChangeResult result;
  Model& model = *link.model();
  StateReading reading =
      StateReader(report).Read(model, *link.client(), StateVars(*model.catalogue), stop, request.progress);
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
  const auto snapshot = snapshots.Save(result.present);
  if (!snapshot) {
    result.fault = snapshot.error();
    return result;
  }
  result.snapshot = snapshot->path;
  RunOptions options;
  options.stop_on_refusal = request.stop_on_refusal;
  options.move = {{link.target().host, link.target().port}, link.connect_to(), request.move_timeout};
  options.progress = request.progress;
  result.run = PlanRun(report).Run(model, link.client(), *plan, options, stop);
  return result;
}

}  // namespace varkel
