// Firmware upgrade, restart and reset, as a client sees them.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <iterator>

#include "tests/simulator/sensor_rig.h"

namespace varkel::sim {
namespace {

using namespace std::chrono_literals;

Bytes PackageOf(const std::string& first_line, std::size_t size) {
  Bytes package(first_line.begin(), first_line.end());
  package.resize(size, 0xA5);
  return package;
}

class RestartTest : public testing::Test {
 protected:
  void StartSensor(std::chrono::milliseconds restart_time, const std::string& table = {}) {
    sensor_ = std::make_unique<SimulatedSensor>(SensorOptions{
        .table_path = table.empty() ? table_.path() : table, .restart_time = restart_time, .clock = [this] {
          return now_.load();
        }});
    sensor_->Start();
    Reconnect();
  }
  void Reconnect() {
    client_ = Connect(*sensor_, 1, 2000);
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

  TestTable table_{
      "0,Upgrade,Firmware,,,,,,,,,,\n"
      "1,1,0x0B,,,Firmware Version,SWVER_YMD,1.2.3.4 (2024-01-02),8,,1_1_1_0,,\n"
      "1,2,0x0C,,,Run Time,DT,0 h 0 min 5 s,4,,,1,\n"
      "1,3,0x0D,,,Temperature,int16,40.00,2,0.1,,1,\n"
      "2,1,0x31,0x41,1,Port,uint16,258,2,,,,\n"
      "3,1,,0x60,1,Upgrade,raw,,0,,1_1_2_4,,\n"
      "3,2,,0x00010205,1,Second Upgrade,raw,,0,,1_1_3_4,,\n"
      "4,1,0x10,,,Restart,raw,,0,,0_0_0_6,,\n"
      "4,2,0x25,,,Reset,raw,,0,,0_0_0_6,,\n"};
  std::atomic<std::chrono::milliseconds> now_{0ms};
  std::unique_ptr<SimulatedSensor> sensor_;
  std::unique_ptr<quarn::lidar::KtcClient> client_;
  Bytes result_;
  std::atomic<std::uint32_t> progress_{0};
};

TEST_F(RestartTest, RunsTheFirmwareThatAPackageNamed) {
  StartSensor(1ms);
  const struct {
    std::string first_line, command, version;
    std::size_t size;
    std::uint32_t pieces;
  } kCases[] = {
      {"VARKEL-SIM FIRMWARE 9.8.7.0 2025-06-07\n", "0x60", "9.8.7.0 (2025-06-07)", 1024, 1},
      {"VARKEL-SIM FIRMWARE 9.8.255.1 2025-12-31\n", "0x00010205", "9.8.255.1 (2025-12-31)", 2049, 3},
      {"VARKEL-SIM FIRMWARE 1.2.3.256 2025-12-31\n", "0x60", "9.8.255.1 (2025-12-31)", 100, 1},
      {"VARKEL-SIM FIRMWARE 1.2.3.4 2025-13-01\n", "0x60", "9.8.255.1 (2025-12-31)", 100, 1},
  };
  std::string version = "1.2.3.4 (2024-01-02)";
  std::size_t restarts = 0;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.first_line);
    const Bytes package = PackageOf(c.first_line, c.size);
    ASSERT_EQ(Transfer(package, c.command), 0);
    EXPECT_EQ(progress_, c.pieces);
    EXPECT_EQ(sensor_->ReceivedPackage(), package);
    EXPECT_EQ(sensor_->ValueText("Firmware Version"), version) << "the old firmware runs until the restart";
    ASSERT_EQ(Query(0x10), 0);
    ASSERT_TRUE(IsBack(++restarts));
    Reconnect();
    version = c.version;
    EXPECT_EQ(sensor_->ValueText("Firmware Version"), version);
  }
  sensor_->Misbehave("0x10=error:6#1");
  EXPECT_EQ(Query(0x10), -1);
  EXPECT_EQ(sensor_->restarts(), restarts) << "an error is a refusal";
  ASSERT_EQ(Query(0x25), 0);
  ASSERT_TRUE(IsBack(restarts + 1));
  EXPECT_EQ(sensor_->ValueText("Firmware Version"), version) << "a reset brings no old firmware back";
}

TEST_F(RestartTest, DisconnectsEverybodyAndRefusesUntilTheRestartIsOver) {
  StartSensor(10min);
  const RawConnection idle(sensor_->port());
  const RawConnection restarting(sensor_->port());
  const RawConnection waiting(sensor_->port());
  sensor_->Misbehave("0x0C=late:600000");
  ASSERT_TRUE(waiting.Send({0x47, 0x74, 0x0C, 0, 0, 0, 0, 0}));
  ASSERT_TRUE(sensor_->WaitReceived(0x0C, 1, kPatience));
  ASSERT_TRUE(Eventually([this] { return sensor_->connected_clients() == 4; }));
  const std::uint16_t port = sensor_->port();
  const Bytes restart = {0x47, 0x74, 0x10, 0, 0, 0, 0, 0};
  ASSERT_TRUE(restarting.Send(restart));
  EXPECT_EQ(restarting.ReceiveToEnd(), restart);
  EXPECT_EQ(sensor_->restarts(), 1U);
  EXPECT_FALSE(RawConnection(port).connected());
  EXPECT_TRUE(idle.ReceiveToEnd().empty());
  EXPECT_TRUE(waiting.ReceiveToEnd().empty());
  EXPECT_EQ(Query(0x31), -1);
  EXPECT_EQ(sensor_->port(), port);

  const auto start = std::chrono::steady_clock::now();
  sensor_->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 500ms);
  sensor_->Start();
  Reconnect();
  EXPECT_EQ(Query(0x31), 0);
}

TEST_F(RestartTest, KeepsSettingsAndStartsRunningTimesAgain) {
  StartSensor(1ms);
  EXPECT_EQ(sensor_->ValueText("Temperature"), "40.00");
  now_ = 60'000ms;
  EXPECT_NE(sensor_->ValueText("Temperature"), "40.00") << "what the page timer re-reads moves";
  EXPECT_NEAR(std::stod(sensor_->ValueText("Temperature")), 40, 0.9);
  ASSERT_EQ(Query(0x41, {0, 80}), 0);
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 1 min 5 s");
  ASSERT_EQ(Query(0x10), 0);
  ASSERT_TRUE(IsBack(1));
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 0 min 5 s");
  EXPECT_EQ(sensor_->ValueText("Port"), "80");
  now_ = 62'000ms;
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 0 min 7 s");

  Reconnect();
  sensor_->SetValue("Run Time", "3 h 0 min 0 s");
  sensor_->Misbehave("0x25=silence");
  EXPECT_EQ(Query(0x25), -1) << "carried out without a word";
  ASSERT_TRUE(IsBack(2));
  EXPECT_EQ(sensor_->ValueText("Port"), "258");
  EXPECT_EQ(sensor_->ValueText("Run Time"), "0 h 0 min 5 s");
}

#ifdef VARKEL_MAKE_PACKAGE
int MakePackage(const std::string& arguments) {
  return std::system((std::string(VARKEL_MAKE_PACKAGE) + " " + arguments).c_str());
}

TEST_F(RestartTest, TakesWhatThePackageToolMakes) {
  for (const std::string arguments :
       {"3.5.0 2024-11-05 100", "3.5.0.256 2024-11-05 100", "3.5.0.1 2024-13-05 100", "3.5.0.1 2024-11-05 38",
        "3.5.0.1 2024-11-05"}) {
    EXPECT_NE(MakePackage(arguments + " >/dev/null 2>&1"), 0) << arguments;
  }
  const std::string file = testing::TempDir() + "sim_make_package.patch";
  ASSERT_EQ(MakePackage("3.5.0.1 2024-11-05 3000 > " + file), 0);
  std::ifstream stream(file, std::ios::binary);
  const Bytes package{std::istreambuf_iterator<char>(stream), {}};
  std::filesystem::remove(file);
  ASSERT_EQ(package.size(), 3000U);
  StartSensor(1ms, ModelTable("Quenta"));
  ASSERT_EQ(Transfer(package, "0x60"), 0);
  EXPECT_EQ(sensor_->ReceivedPackage(), package);
  ASSERT_EQ(Query(0x10), 0);
  EXPECT_TRUE(Eventually([&] { return sensor_->ValueText("Firmware Version") == "3.5.0.1 (2024-11-05)"; }));
}
#endif

}  // namespace
}  // namespace varkel::sim
