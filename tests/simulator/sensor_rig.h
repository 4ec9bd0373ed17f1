#pragma once

#include "simulator/src/simulated_sensor.h"
#include "tests/quarn/fake_peer.h"

namespace varkel::sim {

/// A connected client.
inline auto Connect(const SimulatedSensor& sensor, std::uint8_t version, std::uint32_t patience_ms = 400) {
  auto client = quarn::test::MakeClient(sensor.port(), version, patience_ms);
  EXPECT_TRUE(quarn::test::Eventually([&] { return client->IsOpen(); }));
  return client;
}

}  // namespace varkel::sim
