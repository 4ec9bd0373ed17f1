#pragma once

#include <cstdint>

namespace quarn::lidar {

/// How long the program waits for a sensor, in milliseconds.
struct SensorTimeouts {
  std::uint32_t exchange_ms = 4000;        ///< KTC, to a network sensor
  std::uint32_t small_exchange_ms = 5000;  ///< KTC to a small sensor, and frames typed into the console
  std::uint32_t transfer_ms = 60000;       ///< KTC, a piece of a file: the sensor writes its flash
  std::uint32_t command_ms = 1000;         ///< a small sensor's command: the user waits for it
  std::uint32_t ota_ms = 30000;     ///< a firmware frame: the sensor erases its flash before it answers
  std::uint32_t unpack_ms = 10000;  ///< after a firmware package: the sensor unpacks it before it can restart
};

/// The time-outs of this process. Change them only before the first client is created; tests with silent
/// sensors shorten them.
inline SensorTimeouts& Timeouts() {
  static SensorTimeouts timeouts;
  return timeouts;
}

}  // namespace quarn::lidar
