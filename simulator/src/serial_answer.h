#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "simulator/src/fault_rules.h"
#include "simulator/src/serial_request.h"
#include "simulator/src/small_sensor_device.h"

namespace varkel::sim {

/// Shared by all transports to a small sensor. Everything in it is thread-safe and outlives them.
struct SerialParts {
  SmallSensorDevice& device;
  FaultRules& faults;
  const std::function<void(const SerialRequest&)>& watcher;  ///< may be empty
};

/// How a request arrives: directly on a line, or inside a KTC command that has rules of its own.
enum class Carriage { kLine, kInsideKtc };

struct SerialAnswer {
  /// The reply frame with the faults that concern its bytes: noise, wrong echo, error and wrong length.
  std::vector<std::uint8_t> bytes;
  ReplyPlan plan;  ///< the remaining faults: delay, pieces, silence, closing
};

SerialAnswer AnswerSerialRequest(const SerialRequest& request, Carriage carriage, const SerialParts& parts);

}  // namespace varkel::sim
