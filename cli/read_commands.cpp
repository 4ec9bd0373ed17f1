#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QTime>
#include <algorithm>
#include <chrono>
#include <exception>
#include <mutex>
#include <set>

#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "VarkelCore/src/state/state_file.h"
#include "VarkelCore/src/state/variable_key.h"
#include "VarkelCore/src/tasks/atomic_file.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "cli/commands.h"

namespace varkel::cli {

namespace {

std::string WithUnit(const StateValue& value) {
  return Plain(value.text) + (value.unit.empty() ? "" : " " + Plain(value.unit));
}

std::string JsonFailure(const ReadFailure& failure) {
  return JsonObject()
      .Text("get", failure.get)
      .Text("payload", failure.payload)
      .Number("code", failure.code)
      .str();
}

/// Names the file after the serial number, and also after the sensor if another one in this run has the same
/// number, so that no file is overwritten.
QString FileIn(const QString& folder, const std::string& sn, const std::string& sensor) {
  static std::mutex mutex;
  static std::set<std::string> taken;
  const std::lock_guard lock(mutex);
  std::string name = sn.empty() ? sensor : sn;
  if (!taken.insert(name).second) name += "-" + sensor;
  return QDir(folder).filePath(SanitizedFileName(QString::fromStdString(name)) + QStringLiteral(".json"));
}

ExitCode ExitOf(const StateReading& reading) {
  if (reading.end == ReadEnd::kConnectionLost) return kNoConnection;
  ExitCode exit = reading.end == ReadEnd::kStopped ? kFailed : kDone;
  for (const ReadFailure& failure : reading.state.failed) {
    exit = MoreSevere(exit, failure.code > 0 ? kRefused : kFailed);
  }
  return exit;
}

std::string FailureLines(const StateReading& reading) {
  std::string text;
  for (const ReadFailure& failure : reading.state.failed) {
    std::string ids;
    for (const std::string& id : failure.ids) ids += (ids.empty() ? "" : ", ") + id;
    text += "\nnot read: " + ids + " (" + failure.get + ": " + failure.reason + ")";
  }
  return text;
}

SensorResult Shown(const Job& job, const StateReading& reading) {
  SensorResult result;
  result.exit = ExitOf(reading);
  std::vector<std::vector<std::string>> rows;
  for (const StateValue& value : reading.state.values) {
    rows.push_back({Plain(value.id), Plain(value.name), WithUnit(value)});
  }
  result.text = Aligned(rows) + FailureLines(reading);
  const bool is_known = !reading.state.sn.empty() || !job.arguments.json || !job.link.has_variables();
  const std::string sn = is_known ? reading.state.sn : SerialNumber(job);
  result.json = JsonHead(job.link.target(), sn, result.exit == kDone)
                    .Raw("values", JsonList(reading.state.values, FormatValue))
                    .Raw("failed", JsonList(reading.state.failed, JsonFailure))
                    .str();
  return result;
}

StateReading ReadVars(const Job& job, const std::vector<VarInfo*>& vars) {
  return StateReader(job.report).Read(*job.link.model(), *job.link.client(), vars, job.stop, job.progress);
}

/// The variables given on the command line; the error is a sentence.
tl::expected<std::vector<VarInfo*>, std::string> WantedVars(const Job& job) {
  const ConfigParser& catalogue = *job.link.model()->catalogue;
  const std::vector<VarInfo*> all = StateVars(catalogue);
  if (job.arguments.all) return all;
  std::vector<VarInfo*> vars;
  for (const std::string& name : job.arguments.names) {
    const auto var = FindVariable(catalogue, name);
    if (!var) return tl::unexpected(var.error());
    if (std::find(all.begin(), all.end(), *var) == all.end()) {
      return tl::unexpected("\"" + name + "\" can't be read.");
    }
    vars.push_back(*var);
  }
  for (const std::string& page : job.arguments.pages) {
    const std::size_t before = vars.size();
    for (VarInfo* var : all) {
      if (MakeStateValue(catalogue, *var, {}, {}).page == page) vars.push_back(var);
    }
    if (vars.size() == before) return tl::unexpected("There is no page \"" + page + "\".");
  }
  return vars;
}

/// The information that a small sensor reports about itself.
SensorResult SmallInfo(const Job& job) {
  SmallSensorInfo info(job.report, job.link.activity(), {[] {}, [] {}});
  info.SetModel(job.link.target().model);
  info.Round(*job.link.session(), job.stop);
  StateReading reading{EmptyState(*job.link.model()), ReadEnd::kComplete};
  std::vector<InfoRow> rows = info.Info();
  for (InfoRow& row : info.Versions()) rows.push_back(std::move(row));
  for (const InfoRow& row : rows) {
    reading.state.values.push_back({{}, row.label, {}, {}, {}, row.value, {}});
    if (row.label == "Serial Number") reading.state.sn = row.value;
  }
  SensorResult result = Shown(job, reading);
  if (rows.front().value == kUnknownText) result.exit = kNoConnection;
  return result;
}

}  // namespace

std::string SerialNumber(const Job& job) {
  Model& model = *job.link.model();
  for (VarInfo* var : StateVars(*model.catalogue)) {
    if (var->var_name != "SN") continue;
    if (!model.values.IsRead(*var)) StateReader(job.report).Read(model, *job.link.client(), {var}, job.stop);
    return model.values.IsRead(*var) ? model.values.Show(*var).text : std::string();
  }
  return {};
}

SensorResult Info(const Job& job) {
  if (!job.link.has_variables()) return SmallInfo(job);
  std::vector<VarInfo*> vars = StateVars(*job.link.model()->catalogue);
  std::erase_if(vars, [](const VarInfo* var) {
    return var->var_name != "SN" && var->var_name != "PN" && var->var_type != "HWVER" &&
           var->var_type != "SWVER_YMD";
  });
  return Shown(job, ReadVars(job, vars));
}

SensorResult Read(const Job& job) {
  if (!job.link.has_variables()) return ModelLacks(job, "variables");
  const auto vars = WantedVars(job);
  return vars ? Shown(job, ReadVars(job, *vars)) : Sentence(job.link.target(), kFailed, vars.error());
}

SensorResult Watch(const Job& job) {
  if (!job.link.has_variables()) return ModelLacks(job, "variables");
  const auto vars = WantedVars(job);
  if (!vars) return Sentence(job.link.target(), kFailed, vars.error());
  ExitCode exit = kDone;
  for (int round = 0; job.arguments.count == 0 || round < job.arguments.count; ++round) {
    const std::chrono::milliseconds interval(job.arguments.interval_ms);
    if (round > 0 && !SleepUnlessStopped(job.stop, interval)) break;
    const StateReading reading = ReadVars(job, *vars);
    if (reading.end == ReadEnd::kStopped) break;
    SensorResult line = Shown(job, reading);
    line.text = QLocale::c().toString(QTime::currentTime(), QStringLiteral("HH:mm:ss.zzz")).toStdString();
    for (const StateValue& value : reading.state.values) {
      line.text += "  " + Plain(value.name) + "=" + WithUnit(value);
    }
    line.text += FailureLines(reading);
    exit = MoreSevere(exit, line.exit);
    job.show(line);
    if (reading.end == ReadEnd::kConnectionLost) break;
  }
  return {exit, {}, {}};
}

SensorResult TakeSnapshot(const Job& job) {
  if (!job.link.has_variables()) return ModelLacks(job, "variables");
  const StateReading reading = ReadVars(job, StateVars(*job.link.model()->catalogue));
  if (reading.end != ReadEnd::kComplete) {
    return Sentence(job.link.target(), reading.end == ReadEnd::kStopped ? kFailed : kNoConnection,
                    "The sensor could not be read completely, so no file was written.");
  }
  QString path = QString::fromStdString(job.arguments.output);
  if (QFileInfo(path).isDir()) {
    path = FileIn(path, reading.state.sn, job.link.target().name());
  }
  const std::string fault = SaveState(reading.state, path);
  if (!fault.empty()) return Sentence(job.link.target(), kFailed, fault);
  SensorResult result;
  result.exit = ExitOf(reading);
  result.text = path.toStdString() + ": " + std::to_string(reading.state.values.size()) + " variables" +
                FailureLines(reading);
  result.json = JsonHead(job.link.target(), reading.state.sn, result.exit == kDone)
                    .Text("file", path.toStdString())
                    .Number("variables", static_cast<long long>(reading.state.values.size()))
                    .Raw("failed", JsonList(reading.state.failed, JsonFailure))
                    .str();
  return result;
}

}  // namespace varkel::cli
