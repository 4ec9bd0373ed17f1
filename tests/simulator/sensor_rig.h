#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "simulator/src/simulated_sensor.h"
#include "tests/quarn/fake_peer.h"

namespace varkel::sim {

using Bytes = std::vector<std::uint8_t>;

using quarn::test::Eventually;

/// A connected client.
inline auto Connect(const SimulatedSensor& sensor, std::uint8_t version, std::uint32_t patience_ms = 400) {
  auto client = quarn::test::MakeClient(sensor.port(), version, patience_ms);
  EXPECT_TRUE(Eventually([&] { return client->IsOpen(); }));
  return client;
}

/// A small sensor's table in a file that goes with the object.
class TestTable {
 public:
  TestTable() {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::path(testing::TempDir()) / (std::string("sim_") + test->name() + ".csv");
    std::ofstream(path_, std::ios::binary)
        << "GroupID,Index,Get,Set,SetIndex,VarName,VarType,DefaultValue,VarLen,Coefficient,FunctionModule,"
           "TimerUpdate,GetCmdPayload,Permission,Options,Unit,OptionDescription,SetCoefficient\n"
           "1,1,0x31,,,Name,string,sensor,6,,,,\n"
           "1,2,0x31,0x41,1,Port,uint16,258,2,,,,\n"
           "4,1,,0x10,1,Restart,raw,,0,,1_1_1_6,,\n";
  }
  ~TestTable() { std::filesystem::remove(path_); }
  TestTable(const TestTable&) = delete;
  TestTable& operator=(const TestTable&) = delete;

  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace varkel::sim
