#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <tl/expected.hpp>

#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/sensor_session.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/Capture/src/capture_recorder.h"

namespace varkel {

/// Why a connection could not be made, for the user.
struct ConnectFailure {
  std::string notice;    ///< what to check
  std::string log_line;  ///< what went wrong
};

using SessionResult = tl::expected<std::shared_ptr<SensorSession>, ConnectFailure>;

/// What every session is made with; all of it outlives the session.
struct SessionContext {
  UserReport& report;  ///< gets the byte log's lines
  const ByteLogSwitch& log_bytes;
  const Activity& activity;
  quarn::lidar::CaptureRecorder* recorder = nullptr;  ///< null: nothing is ever recorded
};

// The three ways to a session. Each blocks until the session is made or can't be; a stop ends the attempt at
// once, and what it then returns counts for nothing.

/// KTC over TCP to a sensor in the network, which has to answer a KTC command.
SessionResult ConnectNetworkSensor(const std::stop_token& stop, const ConnectionSettings& settings,
                                   const SessionContext& context, SensorSession::Periodic periodic);

/// KTC over TCP to a small sensor, whose serial line is put to the settings' baud rate.
SessionResult ConnectSmallSensor(const std::stop_token& stop, const ConnectionSettings& settings,
                                 const SessionContext& context, SensorSession::Periodic periodic);

/// The two serial lines of a small sensor.
SessionResult OpenSerialLines(const ConnectionSettings& settings, const SessionContext& context,
                              SensorSession::Periodic periodic);

}  // namespace varkel
