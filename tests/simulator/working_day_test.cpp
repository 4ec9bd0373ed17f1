// Firmware upgrade, restart and reset, as a client sees them.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/simulator/test_client.h"
#include "tests/simulator/test_table.h"

namespace varkel::sim {
namespace {

using quarn::lidar::KtcClient;
using Bytes = std::vector<std::uint8_t>;
using namespace std::chrono_literals;

constexpr char kRows[] =
    "0,Upgrade,Firmware,,,,,,,,,,\n"
    "1,1,0x0B,,,Firmware Version,SWVER_YMD,1.2.3.4 (2024-01-02),8,,1_1_1_0,,\n"
    "1,2,0x0C,,,Run Time,DT,0 h 0 min 5 s,4,,,1,\n"
    "2,1,0x31,0x41,1,Port,uint16,258,2,,,,\n"
    "3,1,,0x60,1,Upgrade,raw,,0,,1_1_2_4,,\n"
    "3,2,,0x00010205,1,Second Upgrade,raw,,0,,1_1_3_4,,\n"
    "4,1,0x10,,,Restart,raw,,0,,0_0_0_6,,\n"
    "4,2,0x25,,,Reset,raw,,0,,0_0_0_6,,\n";

Bytes PackageOf(const std::string& first_line, std::size_t size) {
  Bytes package(first_line.begin(), first_line.end());
  package.resize(size, 0xA5);
  return package;
}

class WorkingDayTest : public testing::Test {
 protected:
  void StartSensor(std::chrono::milliseconds restart_time) {
    sensor_ = std::make_unique<SimulatedSensor>(
        SensorOptions{.table_path = table_.path(), .restart_time = restart_time, .clock = [this] {
                        return std::chrono::milliseconds(now_ms_.load());
                      }});
    sensor_->Start();
    Reconnect();
  }
  void Reconnect() {
    client_ = Connect(*sensor_, 1);
    ASSERT_TRUE(client_);
  }
  int Query(std::uint8_t command, const Bytes& payload = {}) {
    return client_->QueryCommand(payload, result_, command);
  }
  int Transfer(const Bytes& package, std::string command) {
    return client_->TransferFileByCmdText(package, command, progress_);
  }
  /// The sensor has come up again after its n-th restart.
  bool IsBack(std::size_t restarts) {
    return sensor_->restarts() == restarts &&
           Eventually([this] { return RawConnection(sensor_->port()).connected(); });
  }

  TestTable table_{kRows};
  std::atomic<int> now_ms_{0};
  std::unique_ptr<SimulatedSensor> sensor_;
  std::unique_ptr<KtcClient> client_;
  Bytes result_;
  std::atomic<std::uint32_t> progress_{0};
};

struct Upgrade {
  std::string command;
  std::size_t size;
  std::uint32_t pieces;
};

TEST_F(WorkingDayTest, RunsTheNewFirmwareAfterTheNextRestart) {
  StartSensor(1ms);
  const std::vector<Upgrade> upgrades = {{"0x60", 1024, 1}, {"0x00010205", 2049, 3}};
  std::string version = "1.2.3.4 (2024-01-02)";
  for (std::size_t i = 0; i < upgrades.size(); ++i) {
    SCOPED_TRACE(upgrades[i].command);
    const std::string number = "9.8.7." + std::to_string(i);
    const Bytes package = PackageOf("VARKEL-SIM FIRMWARE " + number + " 2025-06-07\n", upgrades[i].size);
    ASSERT_EQ(Transfer(package, upgrades[i].command), 0);
    EXPECT_EQ(progress_, upgrades[i].pieces);
    EXPECT_EQ(sensor_->ReceivedPackage(), package);
    EXPECT_EQ(sensor_->ValueText("Firmware Version"), version) << "the old firmware runs until the restart";

    ASSERT_EQ(Query(0x10), 0);
    ASSERT_TRUE(IsBack(i + 1));
    Reconnect();
    version = number + " (2025-06-07)";
    EXPECT_EQ(sensor_->ValueText("Firmware Version"), version);
    ASSERT_EQ(Query(0x0B), 0);
    EXPECT_EQ(result_, Bytes({9, 8, 7, static_cast<std::uint8_t>(i), 0x07, 0xE9, 6, 7}));
  }
  ASSERT_EQ(Query(0x25), 0);
  ASSERT_TRUE(IsBack(3));
  EXPECT_EQ(sensor_->ValueText("Firmware Version"), version) << "a reset brings no old firmware back";
}

struct Fault {
  std::string rule;
  std::uint32_t stops_at;  ///< the piece under way when the client gives up
  int last_return_code;
};

// A transfer that fails leaves no package; the next one gets through, over a new connection.
TEST_F(WorkingDayTest, MisbehavesInTheMiddleOfATransfer) {
  StartSensor(1ms);
  const Bytes package = PackageOf("no version\n", 2500);
  const std::vector<Fault> faults = {
      {"0x60=error:7#3", 3, 7},
      {"0x60=wrong-echo#2", 2, 0},
      {"0x60=close:3#1", 1, KtcClient::kNoHeader},
  };
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.rule);
    sensor_->Misbehave(fault.rule);
    EXPECT_EQ(Transfer(package, "0x60"), -1);
    EXPECT_EQ(progress_, fault.stops_at);
    EXPECT_EQ(client_->LastReturnCode(), fault.last_return_code);
    EXPECT_TRUE(sensor_->ReceivedPackage().empty());
    Reconnect();
  }
  sensor_->Misbehave("0x00010205=late:100#2");
  EXPECT_EQ(Transfer(package, "0x00010205"), 0);
  EXPECT_EQ(sensor_->ReceivedPackage(), package);
  sensor_->Misbehave("0x10=error:6#1");
  EXPECT_EQ(Query(0x10), -1);
  EXPECT_EQ(client_->LastReturnCode(), 6);
  EXPECT_EQ(sensor_->restarts(), 0U) << "an error is a refusal";
}

TEST_F(WorkingDayTest, DisconnectsEverybodyAndRefusesUntilTheRestartIsOver) {
  StartSensor(10min);
  RawConnection idle(sensor_->port());
  RawConnection restarting(sensor_->port());
  RawConnection waiting(sensor_->port());
  sensor_->Misbehave("0x0C=late:600000");
  ASSERT_TRUE(waiting.Send({0x47, 0x74, 0x0C, 0, 0, 0, 0, 0}));
  ASSERT_TRUE(sensor_->WaitReceived(0x0C, 1, kPatience));
  ASSERT_TRUE(Eventually([this] { return sensor_->connected_clients() == 4; }));
  const std::uint16_t port = sensor_->port();

  ASSERT_TRUE(restarting.Send({0x47, 0x74, 0x10, 0, 0, 0, 0, 0}));
  EXPECT_EQ(restarting.ReceiveToEnd(), Bytes({0x47, 0x74, 0x10, 0, 0, 0, 0, 0}));
  EXPECT_EQ(sensor_->restarts(), 1U);
  EXPECT_FALSE(RawConnection(port).connected());
  EXPECT_TRUE(idle.ReceiveToEnd().empty());
  EXPECT_TRUE(waiting.ReceiveToEnd().empty());
  EXPECT_TRUE(Eventually([this] { return sensor_->connected_clients() == 0; }));
  EXPECT_EQ(Query(0x31), -1);
  EXPECT_EQ(sensor_->port(), port);

  const auto start = std::chrono::steady_clock::now();
  sensor_->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 500ms);
  sensor_->Start();
  Reconnect();
  EXPECT_EQ(Query(0x31), 0);
}

TEST_F(WorkingDayTest, RestartKeepsSettingsAndStartsRunningTimesAgain) {
  StartSensor(1ms);
  now_ms_ = 60'000;
  ASSERT_EQ(Query(0x41, {0, 80}), 0);
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 1 min 5 s");
  ASSERT_EQ(Query(0x10), 0);
  ASSERT_TRUE(IsBack(1));
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 0 min 5 s");
  EXPECT_EQ(sensor_->ValueText("Port"), "80");
  now_ms_ = 62'000;
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 0 min 7 s");

  Reconnect();
  sensor_->SetValue("Run Time", "3 h 0 min 0 s");
  sensor_->Misbehave("0x25=silence");
  EXPECT_EQ(Query(0x25), -1) << "carried out without a word";
  ASSERT_TRUE(IsBack(2));
  EXPECT_EQ(sensor_->ValueText("Port"), "258");
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 0 min 5 s");
}

TEST_F(WorkingDayTest, SurvivesRestartsAskedForAtOnce) {
  StartSensor(1ms);
  constexpr int kRounds = 5;
  for (int round = 0; round < kRounds; ++round) {
    RawConnection first(sensor_->port());
    RawConnection second(sensor_->port());
    const Bytes restart = {0x47, 0x74, 0x10, 0, 0, 0, 0, 0};
    if (first.Send(restart) && second.Send(restart)) {
      first.ReceiveToEnd();
      second.ReceiveToEnd();
    }
    ASSERT_TRUE(Eventually([this] { return RawConnection(sensor_->port()).connected(); }));
  }
  EXPECT_GE(sensor_->restarts(), 1U);
  EXPECT_LE(sensor_->restarts(), 2U * kRounds);
  Reconnect();
  EXPECT_EQ(Query(0x31), 0);
}

#ifdef VARKEL_MAKE_PACKAGE
int MakePackage(const std::string& arguments) {
  return std::system((std::string(VARKEL_MAKE_PACKAGE) + " " + arguments).c_str());
}

TEST(MakePackage, RefusesWhatNoSensorTakes) {
  for (const char* arguments :
       {"3.5.0 2024-11-05 100", "3.5.0.256 2024-11-05 100", "3.5.0.1 2024-13-05 100", "3.5.0.1 2024-11-5 100",
        "3.5.0.1 2024-11-05 38", "3.5.0.1 2024-11-05 1k", "3.5.0.1 2024-11-05"}) {
    EXPECT_NE(MakePackage(std::string(arguments) + " >/dev/null 2>&1"), 0) << arguments;
  }
}

TEST(MakePackage, WritesWhatARealModelTakes) {
  const std::filesystem::path file = std::filesystem::path(testing::TempDir()) / "sim_make_package.patch";
  ASSERT_EQ(MakePackage("3.5.0.1 2024-11-05 3000 > " + file.string()), 0);
  std::ifstream stream(file, std::ios::binary);
  const Bytes package{std::istreambuf_iterator<char>(stream), {}};
  std::filesystem::remove(file);
  ASSERT_EQ(package.size(), 3000U);

  SimulatedSensor sensor({.table_path = ModelTable("Quenta"), .restart_time = 1ms});
  sensor.Start();
  const auto client = Connect(sensor, 1);
  ASSERT_TRUE(client);
  std::string upgrade = "0x60";
  std::atomic<std::uint32_t> progress{0};
  ASSERT_EQ(client->TransferFileByCmdText(package, upgrade, progress), 0);
  EXPECT_EQ(sensor.ReceivedPackage(), package);
  Bytes result;
  ASSERT_EQ(client->QueryCommand({}, result, 0x10), 0);
  EXPECT_TRUE(Eventually([&] { return sensor.ValueText("Firmware Version") == "3.5.0.1 (2024-11-05)"; }));
}
#endif

}  // namespace
}  // namespace varkel::sim
