#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/session/small_sensor_link.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// The functions of a small sensor: each one short exchange, answered at once, failures as a notice and an
/// "ERROR" log line. Blocks for the length of that exchange. Thread-safe.
///
/// Commands travel inside KTC. Standby, spin rate, return mode, correction and function safety make the
/// controller a KTC one whatever model was selected, as hosts rely on; the others refuse elsewhere.
class SmallSensor {
 public:
  struct Host {
    std::function<bool()> is_upgrading;
    std::function<int()> connect_type;
    std::function<void(int)> set_connect_type;
  };

  SmallSensor(UserReport& report, SmallSensorLink& link, Host host)
      : report_(report), link_(link), host_(std::move(host)) {}

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
  using Exchange = std::shared_ptr<quarn::lidar::SerialExchange>;

  Exchange ReadyAsKtc();
  bool IsKtc(const char* refusal);
  Exchange Ready(const char* refusal);
  bool Report(int code, const char* prefix);

  UserReport& report_;
  SmallSensorLink& link_;
  const Host host_;
};

}  // namespace varkel
