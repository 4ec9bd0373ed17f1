#pragma once

#include "simulator/src/ota_store.h"
#include "simulator/src/serial_log.h"
#include "simulator/src/small_sensor_handler.h"
#include "simulator/src/small_sensor_state.h"

namespace varkel::sim {

/// A small sensor without a way to it. Every part is thread-safe.
struct SmallSensorDevice {
  SmallSensorState state;
  OtaStore firmware;  ///< what came with firmware frames, and what is coming
  SerialLog log;      ///< the requests that came
  SmallSensorHandler handler{state, firmware};

  /// A restart: it no longer waits for components.
  void PowerUp() {
    state.Change([](SmallSensorItems& items) { items.ready_for_firmware = false; });
  }
};

}  // namespace varkel::sim
