#pragma once

#include <functional>

#include "simulator/src/byte_stream.h"
#include "simulator/src/command_handler.h"
#include "simulator/src/exchange_log.h"
#include "simulator/src/fault_rules.h"
#include "simulator/src/replay.h"
#include "simulator/src/restart_switch.h"
#include "simulator/src/small_sensor_tunnel.h"
#include "simulator/src/stop_signal.h"

namespace varkel::sim {

/// What all conversations with clients share. Everything in it is thread-safe and outlives them.
struct SessionParts {
  CommandHandler& handler;
  FaultRules& faults;
  ExchangeLog& log;
  const std::function<void(const Exchange&)>& watcher;  ///< may be empty
  const SmallSensorTunnel* tunnel = nullptr;            ///< the way to the small sensor of this server
  Replay* replay = nullptr;                             ///< answers in place of the others
};

/// Answers one client until it leaves, the rules close the connection, the sensor restarts, or the signal is
/// raised and the stream's socket shut down. Ends the stream unless the rules cut it.
void ServeClient(ByteStream& stream, const StopSignal& stop, RestartSwitch& restart,
                 const SessionParts& parts);

}  // namespace varkel::sim
