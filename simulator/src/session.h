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

/// Shared by all conversations with clients. Everything in it is thread-safe and outlives them.
struct SessionParts {
  CommandHandler& handler;
  FaultRules& faults;
  ExchangeLog& log;
  const std::function<void(const Exchange&)>& watcher;  ///< may be empty
  const SmallSensorTunnel* tunnel = nullptr;            ///< leads to this server's small sensor
  Replay* replay = nullptr;                             ///< if set, answers instead of the others
};

/// Answers one client until it disconnects, a rule closes the connection, the sensor restarts, or the signal
/// is raised and the stream's socket is shut down. Ends the stream properly unless a rule closes it.
void ServeClient(ByteStream& stream, const StopSignal& stop, RestartSwitch& restart,
                 const SessionParts& parts);

}  // namespace varkel::sim
