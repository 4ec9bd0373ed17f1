#include <gtest/gtest.h>

#include "tests/simulator/sensor_rig.h"

namespace varkel::sim {
namespace {

TEST(SimulatedSensor, RefusesClampsAndDrops) {
  const TestTable table;
  SimulatedSensor sensor({.table_path = table.path(), .faults = {"0x41=error:7#1", "0x41=clamp:300"}});
  sensor.Start();
  auto client = Connect(sensor, 1);
  Bytes reply;
  EXPECT_EQ(client->Query(Bytes{9, 9}, 0x41).error(), 7);
  EXPECT_EQ(sensor.ValueText("Port"), "258");
  EXPECT_EQ(client->QueryCommand(Bytes{9, 9}, reply, 0x41), 0);
  EXPECT_EQ(sensor.ValueText("Port"), "300");
  sensor.AddFault("*=drop#2");
  EXPECT_EQ(client->QueryCommand({}, reply, 0x31), 0);
  EXPECT_EQ(client->QueryCommand({}, reply, 0x31), 0);
  EXPECT_TRUE(Eventually([&] { return sensor.connected_clients() == 0; }));
  EXPECT_NE(client->QueryCommand({}, reply, 0x31), 0);
}

}  // namespace
}  // namespace varkel::sim
