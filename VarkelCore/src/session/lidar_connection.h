#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>

#include "VarkelCore/src/session/byte_log.h"
#include "VarkelCore/src/session/connection_settings.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "libquarn/KtcClient/src/ktc_client.h"

namespace varkel {

/// The KTC connection to a sensor in the network: made, probed and ended here. Thread-safe.
class LidarConnection {
 public:
  struct Events {
    /// The connection stands: begin to read. Called with a lock held: it must not call back.
    std::function<void()> start_refresh;
    std::function<void()> connected;  ///< announce it
  };

  LidarConnection(UserReport& report, Events events);
  ~LidarConnection();
  LidarConnection(const LidarConnection&) = delete;
  LidarConnection& operator=(const LidarConnection&) = delete;

  /// One attempt from beginning to end, on a worker's thread. Success and failure are reported; a stop ends
  /// it without a word.
  void Init(const std::stop_token& stop, const ConnectionSettings& settings);

  /// Asks the sensor whether it answers KTC (commands 7 and 8). Changes nothing.
  bool CheckLidarConnection();

  /// Marks the connection as ended and wakes whoever waits for the sensor. Drop follows when they are gone.
  void Interrupt();
  /// Lets go of the client.
  void Drop();

  /// The client for the length of an operation; null without one.
  std::shared_ptr<quarn::lidar::KtcClient> client() const;
  /// The client if it can be used: connected and open; else null.
  std::shared_ptr<quarn::lidar::KtcClient> usable_client() const;

  bool is_connected() const { return connected_; }
  bool is_connecting() const { return connecting_; }
  /// Whether the bytes of commands go to the log pane.
  void set_log_bytes(bool on) { byte_log_.set_on(on); }
  ByteLog& byte_log() { return byte_log_; }

 private:
  std::shared_ptr<quarn::lidar::KtcClient> OpenClient(const std::stop_token& stop,
                                                      const ConnectionSettings& settings);
  bool Answers(quarn::lidar::KtcClient& client);
  void Begin(const std::shared_ptr<quarn::lidar::KtcClient>& client);
  void InstallByteLog(quarn::lidar::KtcClient& client);

  UserReport& report_;
  const Events events_;
  std::atomic<bool> connected_ = false;
  std::atomic<bool> connecting_ = false;
  ByteLog byte_log_;
  mutable std::mutex mutex_;  // guards what follows, and the step from connecting to connected
  std::shared_ptr<quarn::lidar::KtcClient> client_;
  bool interrupted_ = false;  ///< the client was, or none has come since
};

}  // namespace varkel
