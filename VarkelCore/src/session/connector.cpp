#include "VarkelCore/src/session/connector.h"

#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"

namespace varkel {

Connector::Connector(SensorConnection& connection, WorkerThreads& workers, SessionContext context,
                     Rounds rounds, Events events)
    : connection_(connection),
      workers_(workers),
      context_(context),
      rounds_(std::move(rounds)),
      events_(std::move(events)) {}

bool Connector::Start(int connect_type, const ConnectionSettings& settings) {
  if (connection_.is_connecting()) return false;
  switch (connect_type) {
    case kNetwork:
      Attempt([this, settings](
                  const auto& stop) { return ConnectNetworkSensor(stop, settings, context_, rounds_.pages); },
              events_.network_sensor_connected);
      return true;
    case kSerialLines:
      Attempt([this, settings](
                  const auto&) { return OpenSerialLines(settings, context_, rounds_.small_sensor_info); },
              events_.small_sensor_connected);
      return true;
    case kKtcToSmallSensor:
      Attempt(
          [this, settings](const auto& stop) {
            return ConnectSmallSensor(stop, settings, context_, rounds_.small_sensor_info);
          },
          events_.small_sensor_connected);
      return true;
    default:
      return false;
  }
}

void Connector::Attempt(const SensorConnection::Maker& make, const std::function<void()>& connected) {
  workers_.Start([this, make, connected](const std::stop_token& stop) {
    connection_.Connect(stop, make,
                        {[&] {
                           context_.report.Log("Lidar connected", "INFO");
                           connected();
                         },
                         [&](const ConnectFailure& failure) {
                           context_.report.Error(failure.notice);
                           context_.report.Log(failure.log_line, "ERROR");
                         }});
  });
}

}  // namespace varkel
