#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/session/activity.h"
#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// The functions of a small sensor: each one short exchange, answered at once, failures as a notice and an
/// "ERROR" log line. Blocks for the length of that exchange. Thread-safe.
///
/// Commands travel inside KTC. Standby, spin rate, return mode, correction and function safety make the
/// controller a KTC one whatever model was selected, as hosts rely on; the others refuse elsewhere.
class SmallSensor {
 public:
  /// The session's channel; null when not connected.
  using CurrentChannel = std::function<std::shared_ptr<SmallSensorChannel>()>;

  /// `connect_type` is the controller's; everything outlives this object.
  SmallSensor(UserReport& report, const Activity& activity, CurrentChannel channel,
              std::atomic<int>& connect_type)
      : report_(report), activity_(activity), channel_(std::move(channel)), connect_type_(connect_type) {}

  void SetStandby(int standby);  ///< any number but 0 is standby
  void SetSpinRate(int rate);    ///< its low byte
  void SetReturnMode(int mode);  ///< 0 strongest, else last
  /// Writes the correction data to the file `path` (UTF-8). 0, -1 when refused or not written, else the code.
  int GetCorrection(const std::string& path);
  /// The state's text, then the fault codes; empty on failure.
  std::vector<std::string> GetLidarFunctionSafety();

  std::string GetBaudRate();  ///< decimal; empty on failure
  void SetBaudRate(const std::string& text);
  /// Address and port as texts; empty on failure. `silent` keeps the exchange out of the byte log.
  std::vector<std::string> GetDestinationConfig(bool silent);
  bool SetDestinationIPandPort(const std::string& ip, int port);
  /// Indices of the page's lists.
  void SetImuRange(int angular_range_index, int accel_range_index);

 private:
  using Channel = std::shared_ptr<SmallSensorChannel>;
  using Exchange = std::shared_ptr<quarn::lidar::SerialExchange>;

  Exchange ReadyAsKtc();
  Channel ReadyIfKtc(const char* only_ktc, const char* not_ready);
  Channel Ready(const char* refusal);
  bool Report(int code, const char* prefix);

  UserReport& report_;
  const Activity& activity_;
  const CurrentChannel channel_;
  std::atomic<int>& connect_type_;
};

}  // namespace varkel
