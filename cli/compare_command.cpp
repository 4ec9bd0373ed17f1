#include "VarkelCore/src/state/state_compare.h"

#include <QString>

#include "VarkelCore/src/state/state_file.h"
#include "cli/commands.h"

namespace varkel::cli {

namespace {

std::string JsonDifference(const Difference& difference) {
  return JsonObject()
      .Text("id", difference.id)
      .Text("name", difference.name)
      .Text("kind", DifferenceKindName(difference.kind))
      .Text("left", difference.left)
      .Text("right", difference.right)
      .str();
}

SensorResult Shown(const Comparison& comparison, JsonObject json) {
  SensorResult result;
  result.exit = comparison.is_equal() ? kDone : kDifferent;
  std::vector<std::vector<std::string>> rows;
  for (const Difference& difference : comparison.differences) {
    std::string both = Plain(difference.left) + " → " + Plain(difference.right);
    if (difference.kind == DifferenceKind::kOnlyLeft) both = "only left: " + Plain(difference.left);
    if (difference.kind == DifferenceKind::kOnlyRight) both = "only right: " + Plain(difference.right);
    if (difference.kind == DifferenceKind::kOtherBytes) both.insert(0, "same text, other bytes: ");
    rows.push_back({Plain(difference.id), Plain(difference.name), both});
  }
  if (comparison.other_model) result.text += "The models differ.\n";
  if (comparison.other_table) result.text += "The tables differ: compared by identifier and name.\n";
  result.text += rows.empty() ? "no difference" : Aligned(rows);
  result.json = json.Bool("other_table", comparison.other_table)
                    .Raw("differences", JsonList(comparison.differences, JsonDifference))
                    .str();
  return result;
}

LiveValues LiveOf(const Arguments& arguments) {
  return arguments.live ? LiveValues::kCompared : LiveValues::kIgnored;
}

}  // namespace

SensorResult CompareSensor(const Job& job) {
  if (!job.link.has_variables()) return ModelLacks(job, "variables");
  const Model& model = *job.link.model();
  tl::expected<SensorState, std::string> left = DefaultState(model);
  if (!job.arguments.defaults) left = LoadState(QString::fromStdString(job.arguments.names.front()));
  if (!left) return Sentence(job.link.target(), kFailed, left.error());
  const StateReading reading =
      StateReader(job.report)
          .Read(*job.link.model(), *job.link.client(), StateVars(*model.catalogue), job.stop, job.progress);
  if (reading.end != ReadEnd::kComplete) {
    return Sentence(job.link.target(), reading.end == ReadEnd::kStopped ? kFailed : kNoConnection,
                    "The sensor could not be read completely.");
  }
  return Shown(CompareStates(*left, reading.state, LiveOf(job.arguments)),
               JsonHead(job.link.target(), reading.state.sn, true));
}

SensorResult CompareFiles(const Arguments& arguments) {
  const auto left = LoadState(QString::fromStdString(arguments.names.at(0)));
  const auto right = LoadState(QString::fromStdString(arguments.names.at(1)));
  for (const auto* state : {&left, &right}) {
    if (*state) continue;
    return {kFailed, state->error(), JsonObject().Bool("ok", false).Text("error", state->error()).str()};
  }
  return Shown(CompareStates(*left, *right, LiveOf(arguments)), JsonObject());
}

}  // namespace varkel::cli
