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
  kComplete,        ///< everything was asked for; the state lists what failed
  kConnectionLost,  ///< the sensor does not answer any more
  kStopped
};

struct StateReading {
  SensorState state;
  ReadEnd end = ReadEnd::kComplete;
};

/// Reads variables as the pages do: one exchange for those of one get command. Works on the calling thread.
class StateReader {
 public:
  /// Hears before each exchange how many are done, and of how many.
  using Progress = std::function<void(std::size_t done, std::size_t total)>;

  /// `report` gets faults of the table.
  explicit StateReader(UserReport& report) : reader_({report, [] {}}) {}

  /// Reads the variables into the model's values and returns them as a state. A stop ends it before the next
  /// exchange; who wants the running one to end interrupts the client.
  StateReading Read(Model& model, quarn::lidar::KtcClient& client, const std::vector<VarInfo*>& vars,
                    const std::stop_token& stop = {}, const Progress& progress = {}) const;

  /// One exchange for variables of one get command: 0, or the code that says why there is no reply. The texts
  /// of fields that the reply lacks stay.
  std::int32_t ReadGroupOnce(Model& model, quarn::lidar::KtcClient& client, const ReadGroup& group) const;

 private:
  PageReader reader_;
};

}  // namespace varkel
