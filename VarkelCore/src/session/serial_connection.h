#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/session/byte_log.h"
#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/session/small_sensor_link.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/serial_client.h"
#include "libquarn/Source/src/serial_source.h"

namespace varkel {

/// The connection to a small sensor, over two serial lines or over KTC: made, watched and ended here.
/// Thread-safe. Only one of the two stands at a time.
class SerialConnection : public SmallSensorLink {
 public:
  struct Events {
    /// The connection stands: start the information thread. Called with a lock held: it must not call back.
    std::function<void()> start_info;
    std::function<void()> read_marvo_versions;  ///< ahead of the announcement, when a Marvo is connected
    std::function<void()> connected;            ///< announce it
  };

  SerialConnection(UserReport& report, Events events);
  ~SerialConnection() override;
  SerialConnection(const SerialConnection&) = delete;
  SerialConnection& operator=(const SerialConnection&) = delete;

  /// One attempt over the two serial lines, on a worker's thread. Success and failure are reported; a stop
  /// ends it without a word.
  bool InitSerial(const std::stop_token& stop, const ConnectionSettings& settings);

  /// One attempt over KTC, on a worker's thread; the sensor's serial line is put to the settings' baud rate.
  /// Success and failure are reported; a stop ends it without a word.
  void InitKtcForSerial(const std::stop_token& stop, const ConnectionSettings& settings,
                        const std::string& model_name);

  /// Whether the connection still stands. KTC: the sensor answers command 7 or 8. Lines: none was pulled out.
  /// Changes nothing.
  bool CheckLidarConnection();

  /// Marks the connection as ended and wakes whoever waits for the sensor. Drop follows when they are gone.
  void Interrupt();
  /// Lets go of the client and the lines.
  void Drop();

  bool is_connected() const override { return connected_; }
  bool is_connecting() const { return connecting_; }
  /// Whether the bytes of commands go to the log pane.
  void set_log_bytes(bool on) { byte_log_.set_on(on); }
  ByteLog& byte_log() { return byte_log_; }

  std::shared_ptr<quarn::lidar::SerialExchange> KtcExchange() const override;
  std::shared_ptr<quarn::lidar::SerialExchange> LineExchange() const override;
  int QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& reply,
               bool silent) override;

  /// The client for the length of an operation (console, junction-box upgrade); null without one.
  std::shared_ptr<quarn::lidar::KtcClient> ktc_client() const;

 private:
  using KtcClient = quarn::lidar::KtcClient;
  using SerialSource = quarn::lidar::SerialSource;

  std::shared_ptr<KtcClient> OpenClient(const std::stop_token& stop, const ConnectionSettings& settings);
  void SetLineRate(KtcClient& client, const ConnectionSettings& settings);
  bool Stands(const void* mine) const;
  bool FailLine(const char* notice, const char* log_line);

  UserReport& report_;
  const Events events_;
  std::atomic<bool> connected_ = false;
  std::atomic<bool> connecting_ = false;
  ByteLog byte_log_;

  mutable std::mutex mutex_;  // guards what follows, and the step from connecting to connected
  bool interrupted_ = false;  ///< what stands below was, or nothing has come since
  std::shared_ptr<KtcClient> ktc_client_;
  std::shared_ptr<quarn::lidar::KtcSerialClient> tunnel_;
  std::shared_ptr<SerialSource> rs485_;
  std::shared_ptr<SerialSource> uart_;
  std::shared_ptr<quarn::lidar::SerialClient> lines_;
};

}  // namespace varkel
