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

/// A change of one sensor, from what the user wants to what came of it.
struct ChangeRequest {
  using Wanted = tl::expected<std::vector<WantedValue>, std::vector<PlanRefusal>>;

  /// What the sensor shall hold, given what it holds.
  std::function<Wanted(const Model&, const SensorState& present)> wanted;
  Force force = Force::kNo;
  bool check_only = false;  ///< plans, but writes nothing
  bool stop_on_refusal = false;
  std::chrono::milliseconds move_timeout{30000};  ///< for a sensor that gets another address
  StateReader::Progress progress{};
  std::string reason;  ///< stands in the automatic snapshot
  /// Whether this is the plan that the user saw; asked right before it is carried out.
  std::function<bool(const RunReport& planned)> is_agreed{};
};

/// A sensor, with a model that nobody else uses meanwhile.
struct ConnectedSensor {
  Model& model;
  std::shared_ptr<quarn::lidar::KtcClient> client;
  SensorAddress address;  ///< where it is
  ConnectTo connect;      ///< to another address of it
};

struct ChangeResult {
  SensorState present;  ///< before the change
  ReadEnd reading = ReadEnd::kComplete;
  std::vector<PlanRefusal> refusals;  ///< why nothing was planned
  std::string fault;                  ///< why nothing was written although it was planned
  QString snapshot;  ///< file of the automatic snapshot; empty when nothing was to be written
  /// What came of each planned change; all of them "not sent" when nothing was written.
  RunReport run;
};

/// Reads the sensor, plans, keeps a snapshot of what it held, and carries the plan out. A sensor that can't
/// be read to the end is left alone, as is one whose snapshot can't be kept.
ChangeResult ChangeSensor(const ConnectedSensor& sensor, const ChangeRequest& request,
                          const SnapshotFolder& snapshots, UserReport& report, const std::stop_token& stop);

}  // namespace varkel
