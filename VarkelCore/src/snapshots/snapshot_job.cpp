#include "VarkelCore/src/snapshots/snapshot_job.h"

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "VarkelCore/src/state/sensor_link.h"
#include "VarkelCore/src/state/state_file.h"
#include "libquarn/Platform/src/file_path.h"

namespace varkel {

using quarn::platform::FilePath;
using quarn::platform::PathText;

namespace {

std::stop_token EndOf(const std::shared_ptr<SensorSession>& session) {
  return session ? session->end_token() : std::stop_token();
}

}  // namespace

SnapshotJob::SnapshotJob(const Model& model, std::shared_ptr<SensorSession> session, UserReport& report,
                         StateReader::Progress progress)
    : model_name_(model.name),
      table_folder_(PathText(FilePath(model.catalogue->path()).parent_path())),
      session_(std::move(session)),
      report_(report),
      progress_(std::move(progress)),
      end_with_session_(EndOf(session_), [this] { stop_.request_stop(); }) {}

Model& SnapshotJob::OwnModel() {
  if (own_model_) return *own_model_;
  auto loaded = LoadModel(table_folder_, model_name_);
  if (!loaded) throw std::runtime_error(loaded.error());
  own_model_ = std::move(*loaded);
  return *own_model_;
}

StateReading SnapshotJob::ReadVars(const std::vector<VarInfo*>& vars, const StateReader::Progress& progress) {
  StateReading reading =
      StateReader(report_).Read(OwnModel(), *session_->ktc_client(), vars, stop_.get_token(), progress);
  if (reading.end == ReadEnd::kStopped) throw std::runtime_error("");
  if (reading.end == ReadEnd::kConnectionLost) {
    throw std::runtime_error("The sensor no longer answers, so its state could not be read.");
  }
  return reading;
}

std::string SnapshotJob::ReadSerialNumber() {
  std::vector<VarInfo*> vars;
  for (VarInfo* var : StateVars(catalogue())) {
    if (var->var_name == "SN") vars.push_back(var);
  }
  return ReadVars(vars, {}).state.sn;
}

SensorState SnapshotJob::Read(const StateSource& source) {
  switch (source.kind) {
    case StateSource::kSensor:
      return ReadVars(StateVars(catalogue()), progress_).state;
    case StateSource::kDefaults:
      return DefaultState(OwnModel());
    case StateSource::kFile:
      break;
  }
  auto state = LoadState(source.path);
  if (!state) throw std::runtime_error(state.error());
  return std::move(*state);
}

ChangeResult SnapshotJob::Change(ChangeRequest request, const SnapshotFolder& folder, SensorAddress address,
                                 ConnectTo connect) {
  request.progress = progress_;
  const ConnectedSensor sensor{OwnModel(), session_->ktc_client(), std::move(address), std::move(connect)};
  return ChangeSensor(sensor, request, folder, report_, stop_.get_token());
}

}  // namespace varkel
