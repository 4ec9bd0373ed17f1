#pragma once

#include "simulator/src/ota_store.h"
#include "simulator/src/serial_log.h"
#include "simulator/src/small_sensor_handler.h"
#include "simulator/src/small_sensor_state.h"

namespace varkel::sim {

/// A small sensor without its transport. Every part is thread-safe.
struct SmallSensorDevice {
  SmallSensorState state;
  OtaStore firmware;  ///< received firmware, and the current transfer
  SerialLog log;      ///< the received requests
  SmallSensorHandler handler{state, firmware};

  /// Restarts the sensor: it no longer accepts components.
  void PowerUp() {
    state.Change([](SmallSensorItems& items) { items.ready_for_firmware = false; });
  }
};

}  // namespace varkel::sim
