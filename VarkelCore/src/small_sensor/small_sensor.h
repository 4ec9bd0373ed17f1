#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "VarkelCore/src/session/activity.h"
#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// Why a function failed.
struct FunctionFault {
  int code = -1;     ///< of the sensor or the exchange; -1 if nothing was sent
  std::string text;  ///< as it was reported
};

template <typename Value>
using FunctionResult = tl::expected<Value, FunctionFault>;

/// The functions of a small sensor. Each is one short exchange, for which the call blocks; failures are
/// reported as a notice and an "ERROR" log line. Thread-safe.
///
/// Commands travel inside KTC. Standby, spin rate, return mode, correction and function safety switch the
/// controller to KTC whichever model is selected, which hosts rely on; the others refuse without KTC.
class SmallSensor {
 public:
  /// The session's channel; null when not connected.
  using CurrentChannel = std::function<std::shared_ptr<SmallSensorChannel>()>;

  /// `connect_type` is the controller's; everything outlives this object.
  SmallSensor(UserReport& report, const Activity& activity, CurrentChannel channel,
              std::atomic<int>& connect_type)
      : report_(report), activity_(activity), channel_(std::move(channel)), connect_type_(connect_type) {}

  FunctionResult<void> SetStandby(int standby);  ///< any number except 0 means standby
  FunctionResult<void> SetSpinRate(int rate);    ///< its low byte
  FunctionResult<void> SetReturnMode(int mode);  ///< 0 strongest, else last
  /// Writes the correction data to the file `path` (UTF-8).
  FunctionResult<void> GetCorrection(const std::string& path);
  /// The state as text, then the fault codes.
  FunctionResult<std::vector<std::string>> GetLidarFunctionSafety();

  FunctionResult<std::string> GetBaudRate();  ///< decimal
  FunctionResult<void> SetBaudRate(const std::string& text);
  /// Address and port as text. `silent` keeps the exchange out of the byte log.
  FunctionResult<std::vector<std::string>> GetDestinationConfig(bool silent);
  FunctionResult<void> SetDestinationIPandPort(const std::string& ip, int port);
  /// Indices of the page's lists.
  FunctionResult<void> SetImuRange(int angular_range_index, int accel_range_index);

 private:
  using Channel = std::shared_ptr<SmallSensorChannel>;
  using Exchange = std::shared_ptr<quarn::lidar::SerialExchange>;

  FunctionResult<Exchange> ReadyAsKtc();
  FunctionResult<Channel> ReadyIfKtc(const char* only_ktc, const char* not_ready);
  FunctionResult<Channel> Ready(const char* refusal);
  template <typename Value>
  FunctionResult<Value> Report(const Exchanged<Value>& outcome, const char* prefix);
  tl::unexpected<FunctionFault> Refuse(const std::string& text);

  UserReport& report_;
  const Activity& activity_;
  const CurrentChannel channel_;
  std::atomic<int>& connect_type_;
};

}  // namespace varkel
