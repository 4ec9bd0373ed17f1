#pragma once

#include <cstddef>
#include <functional>
#include <stop_token>
#include <vector>

#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/state/sensor_state.h"
#include "VarkelCore/src/values/model_selection.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// How reading ended.
enum class ReadEnd {
  kComplete,        ///< everything was requested; the state lists what failed
  kConnectionLost,  ///< the sensor no longer answers
  kStopped
};

struct StateReading {
  SensorState state;
  ReadEnd end = ReadEnd::kComplete;
};

/// Reads variables as the pages do, with one exchange per get command. Works on the calling thread.
class StateReader {
 public:
  /// Called before each exchange with the number done and the total.
  using Progress = std::function<void(std::size_t done, std::size_t total)>;

  /// `report` receives faults of the table.
  explicit StateReader(UserReport& report) : reader_({report, [] {}}) {}

  /// Reads the variables into the model's values and returns them as a state. A stop ends the reading before
  /// the next exchange; to end the current one, interrupt the client.
  StateReading Read(Model& model, quarn::lidar::KtcClient& client, const std::vector<VarInfo*>& vars,
                    const std::stop_token& stop = {}, const Progress& progress = {}) const;

  /// Performs one exchange for the variables of one get command: 0, or the code that says why there is no
  /// reply. Fields that the reply lacks keep their texts.
  std::int32_t ReadGroupOnce(Model& model, quarn::lidar::KtcClient& client, const ReadGroup& group) const;

 private:
  PageReader reader_;
};

}  // namespace varkel
