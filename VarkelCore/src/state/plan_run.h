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

/// The outcome of one change.
enum class Verdict {
  kVerified,     ///< written and read back
  kDiffers,      ///< written, but the sensor holds another value
  kRefused,      ///< the sensor refused the command
  kUnconfirmed,  ///< sent, but the sensor's value is not known
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
  std::string holds;      ///< the value that the sensor reported after the write; empty if it did not
  std::int32_t code = 0;  ///< why the command failed, the sensor's or the client's code; otherwise 0
};

/// The outcome of a change before it goes out.
ChangeOutcome NotSent(const PlannedField& field);

enum class RunEnd {
  kComplete,
  kEndedByRefusal,  ///< see RunOptions::stop_on_refusal
  kConnectionLost,
  kNotReached,  ///< the sensor did not answer at its new address
  kStopped
};

struct RunReport {
  std::vector<ChangeOutcome> changes;  ///< every change of the plan, in its order
  RunEnd end = RunEnd::kComplete;
  std::string detail;                       ///< a sentence about an end other than kComplete; otherwise empty
  std::optional<SensorAddress> moved_to{};  ///< where the sensor answers now, if it moved

  bool is_all_verified() const;
};

struct RunOptions {
  bool stop_on_refusal = false;
  MoveOptions move{};
  /// Called before each command with the number done and the total.
  std::function<void(std::size_t done, std::size_t total)> progress{};
};

/// Carries out plans, on the calling thread.
class PlanRun {
 public:
  /// `report` receives faults of the table.
  explicit PlanRun(UserReport& report) : reader_(report) {}

  /// Sends each command with all its fields, then reads back what it wrote. A lost connection ends the run; a
  /// refused command does so only if the options say so. After the address command the run continues at the
  /// new address and verifies the change there. A stop ends the run before the next exchange; to end the
  /// current one, interrupt the client. Afterwards the model's values are those that the sensor reported.
  RunReport Run(Model& model, const std::shared_ptr<quarn::lidar::KtcClient>& client, const SetPlan& plan,
                const RunOptions& options, const std::stop_token& stop = {}) const;

 private:
  StateReader reader_;
};

}  // namespace varkel
