#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "VarkelCore/src/state/plan_run.h"
#include "VarkelCore/src/state/snapshot_folder.h"

namespace varkel {

/// A change of one sensor.
struct ChangeRequest {
  using Wanted = tl::expected<std::vector<WantedValue>, std::vector<PlanRefusal>>;

  /// Returns the values that the sensor is to have, given its present state.
  std::function<Wanted(const Model&, const SensorState& present)> wanted;
  Force force = Force::kNo;
  bool check_only = false;  ///< plan, but write nothing
  bool stop_on_refusal = false;
  std::chrono::milliseconds move_timeout{30000};  ///< time for the sensor to answer at a new address
  StateReader::Progress progress{};
  std::string reason;  ///< noted in the automatic snapshot
  /// Returns whether this is the plan that the user agreed to; called right before it is carried out.
  std::function<bool(const RunReport& planned)> is_agreed{};
};

/// A sensor, with a model that is not used elsewhere in the meantime.
struct ConnectedSensor {
  Model& model;
  std::shared_ptr<quarn::lidar::KtcClient> client;
  SensorAddress address;  ///< its current address
  ConnectTo connect;      ///< connects to its new address
};

struct ChangeResult {
  SensorState present;  ///< before the change
  ReadEnd reading = ReadEnd::kComplete;
  std::vector<PlanRefusal> refusals;  ///< why nothing was planned
  std::string fault;                  ///< why nothing was written although it was planned
  QString snapshot;                   ///< file of the automatic snapshot; empty if there was nothing to write
  /// The outcome of each planned change; all "not sent" if nothing was written.
  RunReport run;
};

/// Reads the sensor, makes a plan, saves a snapshot of the present state, and carries out the plan. Nothing
/// is written to a sensor that can't be read completely or whose snapshot can't be saved.
ChangeResult ChangeSensor(const ConnectedSensor& sensor, const ChangeRequest& request,
                          const SnapshotFolder& snapshots, UserReport& report, const std::stop_token& stop);

}  // namespace varkel
