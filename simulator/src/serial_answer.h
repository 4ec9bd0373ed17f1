#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "simulator/src/fault_rules.h"
#include "simulator/src/serial_request.h"
#include "simulator/src/small_sensor_device.h"

namespace varkel::sim {

/// What all ways to a small sensor share. Everything in it is thread-safe and outlives them.
struct SerialParts {
  SmallSensorDevice& device;
  FaultRules& faults;
  const std::function<void(const SerialRequest&)>& watcher;  ///< may be empty
};

/// How a request travels: by itself on a line, or inside a KTC command that has rules of its own.
enum class Carriage { kLine, kInsideKtc };

struct SerialAnswer {
  /// The reply frame as the rules want it: noise, wrong echo, error and lying length are in it.
  std::vector<std::uint8_t> bytes;
  ReplyPlan plan;  ///< what is left to do: delay, pieces, silence, closing
};

SerialAnswer AnswerSerialRequest(const SerialRequest& request, Carriage carriage, const SerialParts& parts);

}  // namespace varkel::sim
