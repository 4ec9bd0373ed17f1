#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "simulator/src/small_sensor_device.h"

namespace varkel::sim {

struct SmallSensorOptions {
  std::string rs485_link{};  ///< a symbolic link to the line is put here; empty: none
  std::string uart_link{};
  std::vector<std::string> faults{};  ///< see AddFault
  /// Between two blocks of point-cloud data on the RS485 line while in operation; 0: no data.
  std::chrono::milliseconds data_period{0};
  std::function<void(const SerialRequest&)> watcher{};  ///< called on the line's thread, may be empty
};

/// A small sensor on two pseudo-terminals of its own. Commands come on the UART line and are answered on the
/// RS485 line, in between its point-cloud data; firmware frames come and are answered on the UART line.
///
///     SimulatedSmallSensor sensor;
///     sensor.Start();
///     // open sensor.rs485_path() and sensor.uart_path() as serial ports
///
/// Items, faults, firmware and log outlive Stop and Start. All operations are thread-safe but for
/// Start and Stop, which belong to one thread.
class SimulatedSmallSensor {
 public:
  /// Raises std::invalid_argument for a bad fault rule.
  explicit SimulatedSmallSensor(SmallSensorOptions options = {});
  ~SimulatedSmallSensor();
  SimulatedSmallSensor(const SimulatedSmallSensor&) = delete;
  SimulatedSmallSensor& operator=(const SimulatedSmallSensor&) = delete;

  /// New lines, with new paths; pulled ones are replaced. Raises std::runtime_error with a sentence when the
  /// system has no pseudo-terminals or a link can't be made.
  void Start();
  /// Both lines go, with their links.
  void Stop();

  std::string rs485_path() const;  ///< empty while stopped
  std::string uart_path() const;
  std::uint32_t rs485_rate() const;  ///< that a client put the line to; 0 for a pulled one
  std::uint32_t uart_rate() const;

  /// Pulls the line out, whatever is going on there.
  void PullRs485();
  void PullUart();

  /// State, received firmware and request log.
  SmallSensorDevice& device();

  /// As SimulatedSensor::AddFault, with "ldcmd:ITEM" (only "ldcmd-get:ITEM", only "ldcmd-set:ITEM") or
  /// "ota:TYPE" for COMMAND, e.g. "ldcmd:10=silence", "ota:2=error:7#3". "close" and "pull" pull the line of
  /// the reply out.
  void AddFault(const std::string& rule);
  void ClearFaults();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace varkel::sim
