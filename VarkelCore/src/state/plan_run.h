#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/state/address_move.h"
#include "VarkelCore/src/state/set_plan.h"
#include "VarkelCore/src/state/state_reader.h"

namespace varkel {

/// What became of one change.
enum class Verdict {
  kVerified,     ///< written and read back
  kDiffers,      ///< written, but the sensor holds another value
  kRefused,      ///< the sensor refused the command
  kUnconfirmed,  ///< sent, but what the sensor holds now is not known
  kNotSent
};

/// "verified", "differs", "refused", "unconfirmed", "not-sent".
const char* VerdictName(Verdict verdict);

struct ChangeOutcome {
  std::string id;
  std::string name;
  std::string old_text;
  std::string new_text;
  Verdict verdict = Verdict::kNotSent;
  std::string holds;      ///< what the sensor reported after the write; empty where it did not
  std::int32_t code = 0;  ///< why the command failed: the sensor's or the client's; 0 else
};

/// The outcome of a change before it goes out.
ChangeOutcome NotSent(const PlannedField& field);

enum class RunEnd {
  kComplete,
  kEndedByRefusal,  ///< as the caller wanted
  kConnectionLost,
  kNotReached,  ///< the sensor did not come to its new address
  kStopped
};

struct RunReport {
  std::vector<ChangeOutcome> changes;  ///< in the order of the plan, every one of it
  RunEnd end = RunEnd::kComplete;
  std::string detail;                       ///< a sentence on an end that is not kComplete; else empty
  std::optional<SensorAddress> moved_to{};  ///< where the sensor answers now, if it moved

  bool is_all_verified() const;
};

struct RunOptions {
  bool stop_on_refusal = false;
  MoveOptions move{};
  /// Hears before each command how many are done, and of how many.
  std::function<void(std::size_t done, std::size_t total)> progress{};
};

/// Carries plans out. Works on the calling thread.
class PlanRun {
 public:
  /// `report` gets faults of the table.
  explicit PlanRun(UserReport& report) : reader_(report) {}

  /// Sends each command whole, then reads back what it wrote. A refused command does not end the run unless
  /// the options say so; a lost connection does. The address command is followed to the new address and
  /// verified there. A stop ends it before the next exchange; who wants the running one to end interrupts the
  /// client. Afterwards the model's values are what the sensor reported.
  RunReport Run(Model& model, const std::shared_ptr<quarn::lidar::KtcClient>& client, const SetPlan& plan,
                const RunOptions& options, const std::stop_token& stop = {}) const;

 private:
  StateReader reader_;
};

}  // namespace varkel
