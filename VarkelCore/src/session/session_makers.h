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

/// Why a connection could not be established, for the user.
struct ConnectFailure {
  std::string notice;    ///< what to check
  std::string log_line;  ///< what went wrong
};

using SessionResult = tl::expected<std::shared_ptr<SensorSession>, ConnectFailure>;

/// Shared by all sessions; everything in it outlives them.
struct SessionContext {
  UserReport& report;  ///< receives the lines of the byte log
  const ByteLogSwitch& log_bytes;
  const Activity& activity;
  quarn::lidar::CaptureRecorder* recorder = nullptr;  ///< null: nothing is recorded
};

// The three ways to make a session. Each blocks until the session is established or has failed; a stop ends
// the attempt at once, and its result is then ignored.

/// KTC over TCP to a network sensor, which has to answer a KTC command.
SessionResult ConnectNetworkSensor(const std::stop_token& stop, const ConnectionSettings& settings,
                                   const SessionContext& context, SensorSession::Periodic periodic);

/// KTC over TCP to a small sensor, whose serial line is set to the baud rate of the settings.
SessionResult ConnectSmallSensor(const std::stop_token& stop, const ConnectionSettings& settings,
                                 const SessionContext& context, SensorSession::Periodic periodic);

/// The two serial lines of a small sensor.
SessionResult OpenSerialLines(const ConnectionSettings& settings, const SessionContext& context,
                              SensorSession::Periodic periodic);

}  // namespace varkel
