#include <stdexcept>
#include <utility>

#include "VarkelCore/src/session/ktc_connect.h"
#include "VarkelCore/src/session/session_makers.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/trace.h"

namespace varkel {

SessionResult ConnectNetworkSensor(const std::stop_token& stop, const ConnectionSettings& settings,
                                   const SessionContext& context, SensorSession::Periodic periodic) {
  const auto probe = [&](const KtcConnection& connection) {
    const ByteLog::Quiet quiet;
    if (!AnswersKtc(*connection.client)) {
      if (!stop.stop_requested()) quarn::platform::TraceLine("DEBUG: heckLidarConnection() == false");
      throw std::runtime_error("Lidar has No KTC reply.");
    }
    return std::make_shared<SensorSession>(SensorSession::KtcPeer::kNetworkSensor, connection.client,
                                           connection.byte_log, context.activity, std::move(periodic));
  };
  return ConnectKtc("VarkelManager::Init", stop, settings, quarn::lidar::Timeouts().exchange_ms, context,
                    probe);
}

}  // namespace varkel
