#include "VarkelCore/src/snapshots/snapshots.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "VarkelCore/src/snapshots/change_text.h"
#include "VarkelCore/src/snapshots/pending_edits.h"
#include "VarkelCore/src/state/state_file.h"
#include "VarkelCore/src/tasks/atomic_file.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

StateSource FileSource(const QString& path) {
  return {StateSource::kFile, path, QFileInfo(path).fileName()};
}

StateSource SourceOf(int other, const QUrl& file) {
  switch (other) {
    case Snapshots::File:
      return FileSource(file.toLocalFile());
    case Snapshots::Defaults:
      return {StateSource::kDefaults, {}, QStringLiteral("Defaults of the table")};
    default:
      return {StateSource::kSensor, {}, QStringLiteral("The sensor")};
  }
}

QString RemarkOn(const SensorState& left, const SensorState& right, const Comparison& comparison) {
  QStringList remarks;
  if (comparison.other_model) {
    remarks += QStringLiteral("The models differ (%1 and %2), so none of this can be applied.")
                   .arg(QString::fromStdString(left.model), QString::fromStdString(right.model));
  } else if (comparison.other_table) {
    remarks +=
        QStringLiteral("The model's table has changed in the meantime: compared by identifier and name.");
  }
  for (const SensorState* state : {&left, &right}) {
    std::size_t missing = 0;
    for (const ReadFailure& failure : state->failed) missing += failure.ids.size();
    if (missing > 0) {
      remarks += QStringLiteral("%1 of the %2 values could not be read.")
                     .arg(missing)
                     .arg(QLatin1String(state == &left ? "left" : "right"));
    }
  }
  return remarks.join(QLatin1Char(' '));
}

/// Whether both are the same changes from the same values.
bool AreSame(const std::vector<ChangeOutcome>& a, const std::vector<ChangeOutcome>& b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(), [](const ChangeOutcome& one, const ChangeOutcome& other) {
        return one.id == other.id && one.old_text == other.old_text && one.new_text == other.new_text;
      });
}

SensorAddress AddressOf(const ConnectionSettings& settings) {
  return {settings.ip_address, static_cast<std::uint16_t>(quarn::lidar::TextToInt(settings.port))};
}

}  // namespace

// Beginning and ending

bool Snapshots::Refuse(const char* text) {
  context_.report.Error(text);
  return false;
}

Snapshots::Session Snapshots::UsableSession() const {
  Session session = context_.connection.session();
  const bool is_usable = session && session->has_pages() && session->is_ktc_open() && !session->has_ended();
  return is_usable ? session : nullptr;
}

bool Snapshots::MayBegin(Needs needs) {
  if (is_busy()) return Refuse("Please wait until the current snapshot operation has ended");
  if (!context_.models.model()) return Refuse("Please choose a model first");
  if (needs == Needs::kNothing) return true;
  if (!UsableSession()) return Refuse("Please connect to lidar first");
  if (context_.activity.is_upgrading()) return Refuse("Please wait for the lidar to upgrade completely");
  if (context_.activity.is_downloading()) {
    return Refuse("Please wait for the operation log to download completely");
  }
  if (context_.work.is_running()) return Refuse("Please wait until the sensor has answered");
  return true;
}

bool Snapshots::Postpone(std::function<void()> call) {
  if (refreshing_) postponed_ = std::move(call);
  return refreshing_;
}

template <typename Result>
void Snapshots::Start(const Session& session, std::function<Result(SnapshotJob&)> work,
                      std::function<void(Result&)> finished) {
  struct Outcome {
    std::optional<Result> result;
    std::string fault;
  };
  progress_ = 0;
  job_ = std::make_shared<SnapshotJob>(
      *context_.models.model(), session, context_.report, [this](std::size_t done, std::size_t total) {
        context_.events.Post([this, done, total] { ShowProgress(done, total); });
      });
  SetOutcome({});
  emit busyChanged();
  emit progressChanged();
  context_.work.Start(
      [job = job_, work = std::move(work)]() -> Outcome {
        try {
          return {work(*job), {}};
        } catch (const std::exception& error) {
          return {std::nullopt, error.what()};
        }
      },
      [this, finished = std::move(finished)](Outcome outcome) {
        End();
        if (!outcome.fault.empty()) context_.report.Error(outcome.fault);
        if (outcome.result) finished(*outcome.result);
        const auto postponed = std::exchange(postponed_, {});
        if (postponed && !job_) postponed();
        if (refresh_due_) refresh();
      });
}

void Snapshots::End() {
  job_.reset();
  refreshing_ = false;
  context_.activity.EndChange();
  emit busyChanged();
}

void Snapshots::stop() {
  if (job_) job_->RequestStop();
}

void Snapshots::ShowProgress(std::size_t done, std::size_t total) {
  progress_ = total == 0 ? 0 : static_cast<double>(done) / static_cast<double>(total);
  emit progressChanged();
}

void Snapshots::SetOutcome(const QString& outcome) {
  if (outcome == outcome_) return;
  outcome_ = outcome;
  emit outcomeChanged();
}

// The list

void Snapshots::refresh() {
  refresh_due_ = job_ != nullptr;
  if (refresh_due_) return;
  const Session session = UsableSession();
  if (!session || !session->is_idle() || !context_.models.model()) {
    sn_.clear();
    list_.Set({});
    return;
  }
  struct Found {
    std::string sn;
    std::vector<SnapshotFolder::Description> snapshots;
  };
  refreshing_ = true;
  Start<Found>(
      session,
      [this](SnapshotJob& job) {
        Found found{job.ReadSerialNumber(), {}};
        found.snapshots = folder_.Describe(found.sn);
        return found;
      },
      [this](Found& found) {
        sn_ = std::move(found.sn);
        list_.Set(std::move(found.snapshots));
      });
}

QUrl Snapshots::folder() const {
  const QString path = folder_.FolderOf(sn_);
  QDir().mkpath(path);
  return QUrl::fromLocalFile(path);
}

QString Snapshots::proposedName() const {
  const QString sn = SanitizedFileName(QString::fromStdString(sn_));
  return (sn.isEmpty() ? QStringLiteral("snapshot") : sn) +
         QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("-yyyyMMdd-HHmmss'.json'"));
}

void Snapshots::save(const QUrl& file) {
  if (Postpone([this, file] { save(file); })) return;
  if (!MayBegin(Needs::kSensor)) return;
  const QString path = file.toLocalFile();
  struct Saved {
    std::size_t values;
    std::size_t failures;
  };
  Start<Saved>(
      UsableSession(),
      [path](SnapshotJob& job) {
        SensorState state = job.Read({});
        state.reason = "Saved by the user";
        if (const std::string fault = SaveState(state, path); !fault.empty()) throw std::runtime_error(fault);
        return Saved{state.values.size(), state.failed.size()};
      },
      [this, path](Saved& saved) {
        QString text = QStringLiteral("%1 values are saved in %2.").arg(saved.values).arg(path);
        if (saved.failures > 0) text += QStringLiteral(" %1 requests failed.").arg(saved.failures);
        refresh();
        SetOutcome(text);
      });
}

// Comparisons

void Snapshots::compare(int row, int other, const QUrl& file) {
  if (Postpone([this, row, other, file] { compare(row, other, file); })) return;
  StateSource left = SourceOf(Sensor, {});
  if (const auto* const snapshot = list_.At(row)) {
    left = {StateSource::kFile, snapshot->path, SnapshotList::LocalTime(snapshot->time)};
  }
  StateSource right = SourceOf(other, file);
  if (left.kind == StateSource::kSensor) std::swap(left, right);
  if (left.kind == StateSource::kSensor) {
    Refuse("The sensor can't be compared with itself: choose a snapshot, a file or the defaults");
    return;
  }
  Compare(left, right);
}

void Snapshots::compareFile(const QUrl& file) {
  if (Postpone([this, file] { compareFile(file); })) return;
  Compare(FileSource(file.toLocalFile()), SourceOf(UsableSession() ? Sensor : Defaults, {}));
}

void Snapshots::Compare(const StateSource& left, const StateSource& right) {
  const bool asks_sensor = right.kind == StateSource::kSensor;
  if (!MayBegin(asks_sensor ? Needs::kSensor : Needs::kNothing)) return;
  Start<Compared>(
      asks_sensor ? UsableSession() : nullptr,
      [left, right](SnapshotJob& job) {
        Compared compared{job.Read(left), {}, {}};
        const SensorState other = job.Read(right);
        const Comparison comparison = CompareStates(compared.left, other);
        compared.rows = MakeRows(job.catalogue(), compared.left, other, comparison);
        compared.remark = RemarkOn(compared.left, other, comparison);
        return compared;
      },
      [this, left, right](Compared& compared) { Show(compared, left, right); });
}

void Snapshots::Show(Compared& compared, const StateSource& left, const StateSource& right) {
  plan_.reset();
  left_ = std::make_shared<const SensorState>(std::move(compared.left));
  left_title_ = left.title;
  right_title_ = right.title;
  remark_ = compared.remark;
  differences_.Set(std::move(compared.rows));
  showEdits();
  emit comparisonChanged();
}

void Snapshots::showEdits() {
  if (const auto model = context_.models.model()) differences_.SetEdited(PendingKeys(*model));
}

void Snapshots::clear() {
  plan_.reset();
  left_.reset();
  left_title_.clear();
  right_title_.clear();
  remark_.clear();
  differences_.Set({});
  SetOutcome({});
  emit comparisonChanged();
}

// Changes

void Snapshots::plan() {
  if (Postpone([this] { plan(); })) return;
  plan_.reset();
  if (!MayBegin(Needs::kSensor)) return;
  showEdits();
  const auto ids = differences_.SelectedIds();
  if (!left_ || ids.empty()) {
    Refuse("Please select what to apply first");
    return;
  }
  QStringList edited;
  for (int row = 0; row < differences_.rowCount(); ++row) {
    const QModelIndex index = differences_.index(row);
    if (index.data(DifferenceList::kEdited).toBool()) edited += index.data(DifferenceList::kName).toString();
  }
  Plan plan{UsableSession(), context_.models.model(), {}, {}};
  plan.request.reason = "Before " + left_title_.toStdString() + " was applied";
  plan.request.wanted = [left = left_, ids](const Model& model, const SensorState&) {
    return WantedFromState(model, *left, Force::kNo,
                           [&ids](const StateValue& value) { return ids.count(value.id) != 0; });
  };
  ChangeRequest check = plan.request;
  check.check_only = true;
  Start<ChangeResult>(
      plan.session, [this, check](SnapshotJob& job) { return job.Change(check, folder_, {}, {}); },
      [this, plan, edited](ChangeResult& result) { Planned(plan, result, edited); });
}

void Snapshots::Planned(Plan plan, ChangeResult& result, const QStringList& edited) {
  if (plan.session->has_ended()) return;
  const QString problem = ProblemText(result);
  if (!problem.isEmpty()) {
    context_.report.Error(problem.toStdString());
    return;
  }
  if (result.run.changes.empty()) {
    differences_.ShowOutcomes({});
    SetOutcome(QStringLiteral("Nothing to write: the sensor already holds these values."));
    return;
  }
  plan.changes = result.run.changes;
  const QString text = PlanText(plan.changes, edited);
  plan_ = std::move(plan);
  emit planned(text);
}

void Snapshots::apply() {
  if (Postpone([this] { apply(); })) return;
  if (!MayBegin(Needs::kSensor)) return;
  const auto plan = std::exchange(plan_, std::nullopt);
  if (!plan || plan->session != UsableSession() || plan->model != context_.models.model()) {
    Refuse("The sensor that this was planned for is no longer connected; nothing was written");
    return;
  }
  ChangeRequest request = plan->request;
  request.is_agreed = [changes = plan->changes](const RunReport& now) {
    return AreSame(changes, now.changes);
  };
  const SensorAddress address = AddressOf(context_.settings);
  context_.activity.BeginChange();
  Start<ChangeResult>(
      plan->session,
      [this, request, address](SnapshotJob& job) {
        return job.Change(request, folder_, address, Connector());
      },
      [this](ChangeResult& result) { Applied(result); });
}

void Snapshots::Applied(ChangeResult& result) {
  differences_.ShowOutcomes(result.run.changes);
  const QString problem = ProblemText(result);
  if (!problem.isEmpty()) context_.report.Error(problem.toStdString());
  refresh();
  if (!result.run.changes.empty()) SetOutcome(SummaryText(result.run));
}

ConnectTo Snapshots::Connector() const {
  return [this](const SensorAddress& address, const std::stop_token& stop) {
    ConnectionSettings there;
    there.ip_address = address.host;
    there.port = std::to_string(address.port);
    const SessionContext session_context{context_.report, context_.log_bytes, context_.activity};
    const auto no_rounds = [](SensorSession&, const std::stop_token&) {};
    const SessionResult session =
        ConnectNetworkSensor(stop, there, session_context, {std::chrono::hours(24), no_rounds});
    // The client keeps its session alive.
    return session ? std::shared_ptr<quarn::lidar::KtcClient>(*session, (*session)->ktc_client().get())
                   : nullptr;
  };
}

}  // namespace varkel
