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

/// Where a state comes from.
struct StateSource {
  enum Kind { kSensor, kFile, kDefaults };
  Kind kind = kSensor;
  QString path{};   ///< if it is a file
  QString title{};  ///< for the user
};

/// A snapshot operation on its own thread. It has its own copy of the model, so the values and edits on the
/// pages are not affected.
class SnapshotJob {
 public:
  /// `session` may be null for work without the sensor; the end of the session stops the work. `report`
  /// outlives this object.
  SnapshotJob(const Model& model, std::shared_ptr<SensorSession> session, UserReport& report,
              StateReader::Progress progress);

  /// Ends the work after the current exchange. Callable from any thread.
  void RequestStop() { stop_.request_stop(); }

  // The functions below run on the work's thread and raise std::runtime_error with a sentence for the user,
  // or an empty text if the work was stopped.

  const ConfigParser& catalogue() { return *OwnModel().catalogue; }
  /// The connected sensor's serial number; empty if it reports none.
  std::string ReadSerialNumber();
  SensorState Read(const StateSource& source);
  /// Plans and applies a change; see ChangeSensor. `address` is the sensor's.
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
