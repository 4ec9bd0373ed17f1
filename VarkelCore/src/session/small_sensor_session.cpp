#include <utility>

#include "VarkelCore/src/session/ktc_connect.h"
#include "VarkelCore/src/session/session_makers.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Source/src/ktc_serial_client.h"

namespace varkel {

SessionResult ConnectSmallSensor(const std::stop_token& stop, const ConnectionSettings& settings,
                                 const SessionContext& context, SensorSession::Periodic periodic) {
  const auto set_line_rate = [&](const KtcConnection& connection) {
    const auto baud_rate = static_cast<std::uint32_t>(settings.baud_rate);
    connection.client->SetSerialFastBaudRate(baud_rate);
    // Whether the sensor accepted the rate shows later, by whether it answers.
    std::vector<std::uint8_t> reply;
    connection.client->QueryCommand(quarn::lidar::SetBaudRatePayload(baud_rate), reply,
                                    quarn::lidar::kKtcExtensionCmd);
    return std::make_shared<SensorSession>(SensorSession::KtcPeer::kSmallSensor, connection.client,
                                           connection.byte_log, context.activity, std::move(periodic));
  };
  return ConnectKtc("VarkelManager::InitKtcForSerial", stop, settings,
                    quarn::lidar::Timeouts().small_exchange_ms, context, set_line_rate);
}

}  // namespace varkel
