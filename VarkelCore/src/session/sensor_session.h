#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

#include "VarkelCore/src/session/activity.h"
#include "VarkelCore/src/session/byte_log.h"
#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/tasks/periodic_thread.h"
#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Source/src/serial_client.h"
#include "libquarn/Source/src/serial_source.h"

namespace varkel {

/// One connection to one sensor, from the moment it is established until it ends. It is immutable once made;
/// operations hold it for their whole length, so that they never reach another sensor. Thread-safe.
class SensorSession : public SmallSensorChannel {
 public:
  /// Work that a session repeats while it exists. The round must not keep the session alive.
  struct Periodic {
    std::chrono::milliseconds period;
    std::function<void(SensorSession&, const std::stop_token&)> round;
  };

  /// The two open serial lines of a small sensor: commands travel over the UART, data over RS485.
  struct Lines {
    std::shared_ptr<quarn::lidar::SerialSource> rs485;
    std::shared_ptr<quarn::lidar::SerialSource> uart;
    std::shared_ptr<quarn::lidar::SerialClient> client;
  };

  /// Which sensor is at the other end of a KTC client.
  enum class KtcPeer {
    kNetworkSensor,  ///< the pages of its model are read and written
    kSmallSensor     ///< its serial frames travel inside KTC
  };

  /// The client or the lines are open; `activity` outlives the session.
  SensorSession(KtcPeer peer, std::shared_ptr<quarn::lidar::KtcClient> client,
                std::shared_ptr<ByteLog> byte_log, const Activity& activity, Periodic periodic);
  SensorSession(Lines lines, std::shared_ptr<ByteLog> byte_log, const Activity& activity, Periodic periodic);
  ~SensorSession() override;
  SensorSession(const SensorSession&) = delete;
  SensorSession& operator=(const SensorSession&) = delete;

  /// Ends the session for good: calls waiting for the sensor return at once, the periodic thread is joined,
  /// serial ports are closed. May be called more than once, but not from the periodic round.
  void End();
  bool has_ended() const { return stop_.stop_requested(); }
  /// Stopped when the session ends.
  std::stop_token end_token() const { return stop_.get_token(); }

  /// Whether the sensor answers KTC (commands 7 and 8); with serial lines, whether both are still open.
  /// Blocks for two exchanges at most.
  bool Answers();

  /// Whether this sensor has the pages of the model's table.
  bool has_pages() const { return peer_ == KtcPeer::kNetworkSensor; }

  /// The KTC client; null over serial lines.
  const std::shared_ptr<quarn::lidar::KtcClient>& ktc_client() const { return client_; }
  /// Whether KTC commands can be sent: there is a client, and it is open.
  bool is_ktc_open() const;
  /// Whether an operation that must not overlap an upgrade or a download may begin.
  bool is_idle() const { return !has_ended() && !activity_.is_busy(); }

  std::shared_ptr<quarn::lidar::SerialExchange> ktc_exchange() const override { return tunnel_; }
  std::shared_ptr<quarn::lidar::SerialExchange> line_exchange() const override { return lines_.client; }
  ExchangeResult QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                          Logged logged) override;

 private:
  const std::optional<KtcPeer> peer_;
  const std::shared_ptr<quarn::lidar::KtcClient> client_;
  const std::shared_ptr<quarn::lidar::SerialExchange> tunnel_;
  const Lines lines_;
  const std::shared_ptr<ByteLog> byte_log_;
  const Activity& activity_;
  std::stop_source stop_;
  PeriodicThread periodic_;  // last: its rounds use everything above
};

}  // namespace varkel
