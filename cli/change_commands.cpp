#include <QFileInfo>
#include <QString>
#include <algorithm>

#include "VarkelCore/src/state/sensor_change.h"
#include "VarkelCore/src/state/sensor_link.h"
#include "VarkelCore/src/state/state_file.h"
#include "cli/commands.h"

namespace varkel::cli {

namespace {

std::string JsonChange(const ChangeOutcome& change) {
  return JsonObject()
      .Text("id", change.id)
      .Text("name", change.name)
      .Text("old", change.old_text)
      .Text("new", change.new_text)
      .Text("verdict", VerdictName(change.verdict))
      .Text("holds", change.holds)
      .Number("code", change.code)
      .str();
}

std::string Mark(const Job& job, const ChangeOutcome& change) {
  const auto good = [&](const std::string& text) { return job.console.Paint(text, Colour::kGood); };
  const auto bad = [&](const std::string& text) { return job.console.Paint(text, Colour::kBad); };
  switch (change.verdict) {
    case Verdict::kVerified:
      return " " + good("✓");
    case Verdict::kDiffers:
      return " " + bad("✗") + " the sensor holds " + Plain(change.holds);
    case Verdict::kRefused:
      return " " + bad("✗") + " refused, code " + std::to_string(change.code);
    case Verdict::kUnconfirmed:
      return " " + bad("?") + " sent, not confirmed";
    case Verdict::kNotSent:
      break;
  }
  return job.arguments.check ? "" : " – not sent";
}

bool IsWritten(const ChangeOutcome& change) {
  return change.verdict == Verdict::kVerified || change.verdict == Verdict::kDiffers ||
         change.verdict == Verdict::kUnconfirmed;
}

ExitCode ExitOf(const Job& job, const ChangeResult& result) {
  if (result.reading == ReadEnd::kConnectionLost) return kNoConnection;
  if (result.reading == ReadEnd::kStopped || !result.refusals.empty() || !result.fault.empty()) {
    return kFailed;
  }
  if (job.arguments.check) return result.run.changes.empty() ? kDone : kDifferent;
  if (result.run.end == RunEnd::kConnectionLost || result.run.end == RunEnd::kNotReached) {
    return kNoConnection;
  }
  if (result.run.end == RunEnd::kStopped) return kFailed;
  return result.run.is_all_verified() ? kDone : kRefused;
}

std::string Problem(const ChangeResult& result) {
  std::string text;
  for (const PlanRefusal& refusal : result.refusals) text += (text.empty() ? "" : "\n") + refusal.text;
  if (!text.empty()) return text;
  if (result.reading == ReadEnd::kConnectionLost) {
    return "The sensor no longer answers; nothing was written.";
  }
  if (result.reading == ReadEnd::kStopped) return "Stopped; nothing was written.";
  return result.fault.empty() ? result.run.detail : result.fault;
}

SensorResult Shown(const Job& job, const ChangeResult& result) {
  const auto& changes = result.run.changes;
  SensorResult shown;
  shown.exit = ExitOf(job, result);
  std::vector<std::vector<std::string>> rows;
  rows.reserve(changes.size());
  for (const ChangeOutcome& change : changes) {
    rows.push_back({Plain(change.id), Plain(change.name),
                    Plain(change.old_text) + " → " + Plain(change.new_text) + Mark(job, change)});
  }
  const std::string problem = Problem(result);
  shown.text = Aligned(rows);
  if (!problem.empty()) shown.text += (shown.text.empty() ? "" : "\n") + PlainLines(problem);
  shown.is_error = changes.empty() && !problem.empty();
  if (shown.text.empty()) shown.text = "nothing to write";
  auto json = JsonHead(job.link.target(), result.present.sn, shown.exit == kDone || shown.exit == kDifferent);
  json.Raw("changes", JsonList(changes, JsonChange))
      .Bool("changed", std::any_of(changes.begin(), changes.end(), IsWritten));
  if (!problem.empty()) json.Text("error", problem);
  if (!result.snapshot.isEmpty()) json.Text("snapshot", result.snapshot.toStdString());
  shown.json = json.str();
  return shown;
}

SensorResult Change(const Job& job, const std::string& reason, decltype(ChangeRequest::wanted) wanted) {
  if (!job.link.has_variables()) return ModelLacks(job, "variables");
  ChangeRequest request;
  request.wanted = std::move(wanted);
  request.force = job.arguments.force ? Force::kYes : Force::kNo;
  request.check_only = job.arguments.check;
  request.stop_on_refusal = job.arguments.stop_on_refusal;
  request.progress = job.progress;
  request.reason = reason;
  const SensorTarget& target = job.link.target();
  const ConnectedSensor sensor{
      *job.link.model(), job.link.client(), {target.host, target.port}, job.link.connect_to()};
  return Shown(job, ChangeSensor(sensor, request, SnapshotFolder(), job.report, job.stop));
}

SensorResult ListSnapshots(const Job& job, const std::string& sn) {
  SensorResult result;
  std::vector<std::string> ids;
  for (const auto& entry : SnapshotFolder().List(sn)) ids.push_back(entry.id.toStdString());
  for (const std::string& id : ids) result.text += (result.text.empty() ? "" : "\n") + id;
  if (ids.empty()) result.text = "no snapshots";
  result.json = JsonHead(job.link.target(), sn, true)
                    .Raw("snapshots", JsonList(ids, [](const std::string& id) { return JsonText(id); }))
                    .str();
  return result;
}

/// The values of the requested automatic snapshot, by default the newest.
ChangeRequest::Wanted FromSnapshot(const Job& job, const Model& model, const SensorState& present) {
  const auto entry = SnapshotFolder().Find(present.sn, QString::fromStdString(job.arguments.id));
  const auto refuse = [](const std::string& text) {
    return ChangeRequest::Wanted(tl::unexpect, std::vector<PlanRefusal>{{RefusalKind::kUnknown, {}, text}});
  };
  if (!entry) {
    return refuse(job.arguments.id.empty()
                      ? "There is no automatic snapshot of this sensor."
                      : "There is no snapshot \"" + job.arguments.id + "\" of this sensor.");
  }
  const auto state = LoadState(entry->path);
  return state ? WantedFromState(model, *state) : refuse(state.error());
}

}  // namespace

SensorResult Set(const Job& job) {
  std::vector<WantedValue> wanted;
  for (const std::string& assignment : job.arguments.names) {
    const std::size_t equals = assignment.find('=');
    wanted.push_back({assignment.substr(0, equals), assignment.substr(equals + 1), {}});
  }
  return Change(job, "Before a change",
                [&wanted](const Model&, const SensorState&) { return ChangeRequest::Wanted(wanted); });
}

SensorResult Apply(const Job& job) {
  const auto state = LoadState(QString::fromStdString(job.arguments.file));
  if (!state) return Sentence(job.link.target(), kFailed, state.error());
  const auto& pages = job.arguments.pages;
  for (const std::string& page : pages) {
    const auto is_on = [&page](const StateValue& value) { return value.page == page; };
    if (std::none_of(state->values.begin(), state->values.end(), is_on)) {
      return Sentence(job.link.target(), kFailed, "The snapshot has no page \"" + page + "\".");
    }
  }
  const std::string file_name =
      QFileInfo(QString::fromStdString(job.arguments.file)).fileName().toStdString();
  return Change(job, "Before " + file_name + " was applied", [&](const Model& model, const SensorState&) {
    return WantedFromState(
        model, *state, job.arguments.force ? Force::kYes : Force::kNo, [&](const StateValue& value) {
          return pages.empty() || std::find(pages.begin(), pages.end(), value.page) != pages.end();
        });
  });
}

SensorResult RollBack(const Job& job) {
  if (!job.link.has_variables()) return ModelLacks(job, "variables");
  if (job.arguments.list) return ListSnapshots(job, SerialNumber(job));
  return Change(job, "Before a rollback", [&job](const Model& model, const SensorState& present) {
    return FromSnapshot(job, model, present);
  });
}

}  // namespace varkel::cli
