#pragma once

#include <QString>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <tl/expected.hpp>

#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/state/sensor_change.h"
#include "VarkelCore/src/state/state_reader.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// What a state is taken from.
struct StateSource {
  enum Kind { kSensor, kFile, kDefaults };
  Kind kind = kSensor;
  QString path{};   ///< of a file
  QString title{};  ///< how the user knows it
};

/// A piece of work with snapshots, on a thread of its own. It has its own copy of the model: the values that
/// the pages show, and the edits in them, stay as they are.
class SnapshotJob {
 public:
  /// The session may be null for work without the sensor; its end stops the work. `report` outlives this
  /// object.
  SnapshotJob(const Model& model, std::shared_ptr<SensorSession> session, UserReport& report,
              StateReader::Progress progress);

  /// From any thread: the work ends with its present exchange.
  void RequestStop() { stop_.request_stop(); }

  // What follows runs on the work's thread and raises std::runtime_error with a sentence for the user, an
  // empty one when the work was stopped.

  const ConfigParser& catalogue() { return *OwnModel().catalogue; }
  /// The connected sensor's serial number; empty when it reports none.
  std::string ReadSerialNumber();
  SensorState Read(const StateSource& source);
  /// Plans and carries out; see ChangeSensor. `address` is where the sensor is.
  ChangeResult Change(ChangeRequest request, const SnapshotFolder& folder, SensorAddress address,
                      ConnectTo connect);

 private:
  Model& OwnModel();
  StateReading ReadVars(const std::vector<VarInfo*>& vars, const StateReader::Progress& progress);

  const std::string model_name_;
  const std::string table_folder_;
  const std::shared_ptr<SensorSession> session_;
  UserReport& report_;
  const StateReader::Progress progress_;
  std::shared_ptr<Model> own_model_;  ///< loaded when first needed
  std::stop_source stop_;
  std::stop_callback<std::function<void()>> end_with_session_;
};

}  // namespace varkel
