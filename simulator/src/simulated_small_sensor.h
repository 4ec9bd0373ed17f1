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
  std::string rs485_link{};  ///< path of a symbolic link to the line; empty: none
  std::string uart_link{};
  std::vector<std::string> faults{};  ///< see AddFault
  /// Pause between blocks of point-cloud data on the RS485 line while in operation; 0: no data.
  std::chrono::milliseconds data_period{0};
  std::function<void(const SerialRequest&)> watcher{};  ///< called on the line's thread, may be empty
};

/// A small sensor on two pseudo-terminals of its own. Commands arrive on the UART line and are answered on
/// the RS485 line, in between the point-cloud data; firmware frames arrive and are answered on the UART line.
///
///     SimulatedSmallSensor sensor;
///     sensor.Start();
///     // open sensor.rs485_path() and sensor.uart_path() as serial ports
///
/// Items, faults, firmware and log survive Stop and Start. All operations are thread-safe, except Start and
/// Stop, which must be called on the same thread.
class SimulatedSmallSensor {
 public:
  /// Raises std::invalid_argument for an invalid fault rule.
  explicit SimulatedSmallSensor(SmallSensorOptions options = {});
  ~SimulatedSmallSensor();
  SimulatedSmallSensor(const SimulatedSmallSensor&) = delete;
  SimulatedSmallSensor& operator=(const SimulatedSmallSensor&) = delete;

  /// Creates new lines with new paths, also in place of unplugged ones. Raises std::runtime_error with a
  /// sentence if the system has no pseudo-terminals or a link can't be created.
  void Start();
  /// Removes both lines and their links.
  void Stop();

  std::string rs485_path() const;  ///< empty while stopped
  std::string uart_path() const;
  std::uint32_t rs485_rate() const;  ///< as set by the client; 0 if unplugged
  std::uint32_t uart_rate() const;

  /// Unplugs the line, even during an exchange.
  void PullRs485();
  void PullUart();

  /// The sensor's state, received firmware and request log.
  SmallSensorDevice& device();

  /// As SimulatedSensor::AddFault, with "ldcmd:ITEM" ("ldcmd-get:ITEM" or "ldcmd-set:ITEM" for only one of
  /// them) or "ota:TYPE" as COMMAND, e.g. "ldcmd:10=silence", "ota:2=error:7#3". "close" and "pull" unplug
  /// the line of the reply.
  void AddFault(const std::string& rule);
  void ClearFaults();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace varkel::sim
