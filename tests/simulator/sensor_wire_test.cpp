#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "tests/simulator/sensor_rig.h"
#include "tests/support/wine.h"

namespace varkel::sim {
namespace {

using quarn::lidar::KtcClient;

// What a client makes of each misbehaviour, in either version; the exchange after it is a good one.
TEST(SimulatedSensor, MisbehavesByName) {
  const TestTable table;
  SimulatedSensor sensor({.table_path = table.path()});
  sensor.Start();
  const struct {
    const char* rules;  // all for 0x31
    int result;
    int last_return_code;  // of a failure
    Bytes payload;         // of a success
  } kCases[] = {
      {"late:150", 0, 0, kReplyPayload},
      {"late:600", -1, KtcClient::kNoHeader, {}},
      {"late:60 split:2", 0, 0, kReplyPayload},
      {"late:60 split", -1, KtcClient::kNoHeader, {}},  // the client drops lone bytes
      {"noise", 0, 0, kReplyPayload},
      {"wrong-echo", -1, 0, {}},
      {"error:5", -1, 5, {}},
      {"lying-length:4", -1, KtcClient::kNoPayload, {}},
      {"lying-length:-5", 0, 0, {'s', 'e', 'n'}},
      {"silence", -1, KtcClient::kNoHeader, {}},
      {"close:4", -1, KtcClient::kNoHeader, {}},
      {"close:14", -1, KtcClient::kNoPayload, {}},
      {"close:0", -1, KtcClient::kNoHeader, {}},
  };
  for (const std::uint8_t version : Bytes{1, 2}) {
    for (const auto& c : kCases) {
      // There bytes that are sent one by one come together when the machine is busy.
      if (kUnderWine && c.rules == std::string("late:60 split")) continue;
      SCOPED_TRACE(c.rules + std::string(" version ") + std::to_string(version));
      auto client = Connect(sensor, version);
      Bytes result;
      ASSERT_EQ(client->QueryCommand({}, result, 0x99), -1);  // leaves a last return code of 1
      std::istringstream rules(c.rules);
      for (std::string rule; rules >> rule;) sensor.Misbehave("0x31=" + rule + "#1");
      EXPECT_EQ(client->QueryCommand({}, result, 0x31), c.result);
      EXPECT_TRUE(c.result == 0 || client->LastReturnCode() == c.last_return_code);
      EXPECT_EQ(result, c.payload);
      client = Connect(sensor, version);
      EXPECT_EQ(client->QueryCommand({}, result, 0x31), 0);
      EXPECT_EQ(result, kReplyPayload);
    }
  }
}

#ifdef VARKEL_MAKE_PACKAGE
int MakePackage(const std::string& arguments) {
  return std::system((std::string(VARKEL_MAKE_PACKAGE) + " " + arguments).c_str());
}

TEST(SimulatedSensor, RunsTheFirmwareOfThePackageToolAfterARestart) {
  for (const std::string arguments : {"3.5.0.256 2024-11-05 100", "3.5.0.1 2024-13-05 100", "3.5.0.1"}) {
    EXPECT_NE(MakePackage(arguments + " >/dev/null 2>&1"), 0) << arguments;
  }
  const std::string file = testing::TempDir() + "sim_make_package.patch";
  ASSERT_EQ(MakePackage("3.5.0.1 2024-11-05 3000 > " + file), 0);
  std::ifstream stream(file, std::ios::binary);
  const Bytes package{std::istreambuf_iterator<char>(stream), {}};
  std::filesystem::remove(file);
  ASSERT_EQ(package.size(), 3000U);
  SimulatedSensor sensor(
      {.table_path = VARKEL_TABLES "/Quenta.csv", .restart_time = std::chrono::milliseconds(1)});
  sensor.Start();
  const auto client = Connect(sensor, 1, 2000);
  std::string command = "0x60";
  std::atomic<std::uint32_t> progress{0};
  ASSERT_EQ(client->TransferFileByCmdText(package, command, progress), 0);
  EXPECT_EQ(sensor.ReceivedPackage(), package);
  EXPECT_NE(sensor.ValueText("Firmware Version"), "3.5.0.1 (2024-11-05)");
  Bytes result;
  ASSERT_EQ(client->QueryCommand({}, result, 0x10), 0);
  EXPECT_TRUE(Eventually([&] { return sensor.ValueText("Firmware Version") == "3.5.0.1 (2024-11-05)"; }));
}
#endif

}  // namespace
}  // namespace varkel::sim
