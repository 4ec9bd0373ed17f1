// The simulated small sensors as the tool uses them, over two serial lines and inside KTC.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <stop_token>

#include "VarkelCore/src/marvo_upgrade.h"
#include "VarkelCore/src/small_sensor_info.h"
#include "libquarn/Source/src/ota_transfer.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "simulator/src/return_code.h"
#include "tests/core/marvo_sample.h"
#include "tests/simulator/small_sensor_rig.h"

namespace varkel::sim {
namespace {

using namespace std::chrono_literals;
using quarn::lidar::Partition;
using quarn::lidar::SerialExchange;

Bytes NamedPackage(std::size_t size) {
  const std::string first_line = "VARKEL-SIM FIRMWARE 9.8.7.6 2025-06-07\n";
  Bytes package(first_line.begin(), first_line.end());
  package.resize(size, 0xA5);
  return package;
}
constexpr char kNamedVersion[] = "9.8.7.6 (2025-06-07)";

std::string NameOf(const testing::TestParamInfo<const char*>& model) {
  std::string name = model.param;
  std::erase(name, '-');
  return name;
}

class EveryModel : public testing::TestWithParam<const char*> {
 protected:
  bool IsKtc() const { return GetParam() != std::string("Zelto"); }
};
INSTANTIATE_TEST_SUITE_P(Models, EveryModel, testing::Values("Zelto", "Zelto-KTC", "Marvo-KTC"), NameOf);

/// The models that are reached in different ways.
class EveryWay : public EveryModel {};
INSTANTIATE_TEST_SUITE_P(Ways, EveryWay, testing::Values("Zelto", "Zelto-KTC"), NameOf);

struct Function {
  const char* name;
  std::function<void(varkel::SmallSensor&)> call;
  std::function<bool(const SmallSensorItems&)> has_worked;
};

TEST_P(EveryModel, CarriesOutEveryFunction) {
  ConnectedRig rig(GetParam());
  EXPECT_EQ(rig.report.Take(), Lines{"INFO Lidar connected"});
  const std::vector<Function> functions = {
      {"standby", [](auto& sensor) { sensor.SetStandby(-1); }, [](auto& items) { return items.standby; }},
      {"operation", [](auto& sensor) { sensor.SetStandby(0); }, [](auto& items) { return !items.standby; }},
      {"spin rate", [](auto& sensor) { sensor.SetSpinRate(300); },
       [](auto& items) { return items.spin_rate == 44; }},
      {"last return", [](auto& sensor) { sensor.SetReturnMode(1); },
       [](auto& items) { return items.last_return; }},
      {"strongest return", [](auto& sensor) { sensor.SetReturnMode(0); },
       [](auto& items) { return !items.last_return; }},
      {"IMU range", [](auto& sensor) { sensor.SetImuRange(5, 3); },
       [](auto& items) { return items.angular_range == 8 && items.accel_range == 3; }},
  };
  for (const Function& function : functions) {
    function.call(rig.functions);
    EXPECT_TRUE(function.has_worked(rig.Items())) << function.name;
  }
  EXPECT_EQ(rig.report.Take(), Lines{"success: IMU range set successfully"});

  rig.device().state.Change([](SmallSensorItems& items) {
    items.safety_state = 2;
    items.fault_codes = {0x1234, 0x00FF};
    items.correction.assign(SmallSensorItems::kMostCorrection, 0x17);
  });
  EXPECT_EQ(rig.functions.GetLidarFunctionSafety(), (Lines{"Shutdown", "0x1234", "0x00FF"}));
  const auto path = std::filesystem::path(testing::TempDir()) / (std::string(GetParam()) + "-correction.bin");
  EXPECT_EQ(rig.functions.GetCorrection(path.string()), 0);
  std::ifstream file(path, std::ios::binary);
  EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(file), {}), rig.Items().correction);
  std::filesystem::remove(path);
  EXPECT_EQ(rig.report.Take(), Lines{});

  if (!IsKtc()) {
    EXPECT_EQ(rig.lines->rs485_rate(), 3125000U);
    EXPECT_EQ(rig.lines->uart_rate(), 9600U);
    return;
  }
  EXPECT_EQ(rig.functions.GetBaudRate(), "3125000") << "the connection sets it";
  rig.functions.SetBaudRate("921600");
  EXPECT_EQ(rig.functions.GetBaudRate(), "921600");
  EXPECT_TRUE(rig.functions.SetDestinationIPandPort("10.1.2.3", 4567));
  EXPECT_EQ(rig.functions.GetDestinationConfig(false), (Lines{"10.1.2.3", "4567"}));
  EXPECT_EQ(rig.ktc->ValueText("Destination IP"), "10.1.2.3");
}

TEST_P(EveryModel, TellsWhatItIs) {
  ConnectedRig rig(GetParam());
  SmallSensorInfo info(rig.report, rig.connection, {[] { return false; }, [] {}, [] {}});
  info.SetModel(GetParam());
  info.Round(std::stop_token());
  const SmallSensorItems items = rig.Items();
  EXPECT_EQ(info.Info()[0].value, items.serial_number);
  if (GetParam() == std::string("Marvo-KTC")) {
    EXPECT_EQ(items.serial_number, "MK2B2409A0150") << "that of the table";
    info.ReadMarvoVersions();
    EXPECT_EQ(info.Versions(), (std::vector<InfoRow>{{"BMB FPGA Version", items.versions.at(kBmbFpga)},
                                                     {"TMB FPGA Version", items.versions.at(kTmbFpga)},
                                                     {"BMB MCU Version", items.versions.at(kBmbMcu)}}));
  } else {
    EXPECT_EQ(info.Versions(), (std::vector<InfoRow>{{"PBL Version", items.versions.at(kPbl)}}));
  }
  EXPECT_EQ(rig.report.Take(), Lines{"INFO Lidar connected"});
}

TEST_P(EveryWay, TakesAPackageAndRunsIt) {
  ConnectedRig rig(GetParam());
  struct Upgrade {
    int mode;
    std::size_t size;
    std::uint8_t part;
    std::uint8_t other_part;
  };
  for (const Upgrade& upgrade : {Upgrade{1, 1024, kPbl, kBmbMcu}, Upgrade{0, 2049, kBmbMcu, kPbl}}) {
    SCOPED_TRACE(upgrade.mode);
    rig.device().firmware.Clear();
    rig.report.Take();
    const std::string other_version = rig.Items().versions.at(upgrade.other_part);
    const Bytes package = NamedPackage(upgrade.size);
    varkel::test::ClaimedRun claimed(rig.report);
    SendOverSerial(std::stop_token(), *rig.connection.Exchange(), package, upgrade.mode, rig.report,
                   claimed.run);
    EXPECT_EQ(
        rig.report.Take(),
        (Lines{"end",
               "success: Upgrade package transmitted successfully. The lidar will automatically reboot.",
               "disconnect"}));
    ASSERT_EQ(rig.Firmware().size(), 1U);
    const ReceivedFirmware firmware = rig.Firmware().front();
    EXPECT_FALSE(firmware.is_component);
    EXPECT_EQ(firmware.purpose, static_cast<std::uint32_t>(upgrade.mode));
    EXPECT_EQ(firmware.bytes, package);
    EXPECT_EQ(rig.Items().versions.at(upgrade.part), kNamedVersion);
    EXPECT_EQ(rig.Items().versions.at(upgrade.other_part), other_version);
  }
}

// Each time the application of the partition that does not run goes out, and then runs.
TEST(MarvoSensor, SwitchesItsPartitionWithEveryUpgrade) {
  ConnectedRig rig("Marvo-KTC");
  const Bytes package = varkel::test::FullMarvoPackage();
  const auto part = [&](std::size_t begin, std::size_t size) {
    const auto at = package.begin() + static_cast<std::ptrdiff_t>(56 + begin);
    return Bytes(at, at + static_cast<std::ptrdiff_t>(size));
  };
  const std::vector<Bytes> applications = {part(1500, 2048), part(0, 1500)};
  for (const Partition runs : {Partition::kA, Partition::kB}) {
    EXPECT_EQ(rig.Items().partition, runs);
    rig.device().firmware.Clear();
    varkel::test::ClaimedRun claimed(rig.report);
    MarvoUpgrade(rig.report, rig.connection, {0ms, 0ms}).Run(std::stop_token(), package, claimed.run);
    EXPECT_TRUE(rig.report.Has("success: Marvo upgrade completed. The lidar will automatically reboot."));
    rig.report.Take();
    std::vector<std::uint32_t> types;
    for (const ReceivedFirmware& firmware : rig.Firmware()) types.push_back(firmware.purpose);
    ASSERT_EQ(types, (std::vector<std::uint32_t>{2, 1, 0, 3}));
    EXPECT_EQ(rig.Firmware()[0].bytes, applications[static_cast<std::size_t>(runs)]);
    EXPECT_EQ(rig.Firmware()[1].bytes, part(3548 + 1024, 3000 - 1024));
    EXPECT_EQ(rig.Firmware()[3].bytes, part(7572, 10));
    EXPECT_EQ(rig.Items().baud_rate, 9600U);
  }
  EXPECT_EQ(rig.Items().partition, Partition::kA);

  rig.Misbehave("ota:0x12=error:6#2");
  varkel::test::ClaimedRun claimed(rig.report);
  MarvoUpgrade(rig.report, rig.connection, {0ms, 0ms}).Run(std::stop_token(), package, claimed.run);
  EXPECT_TRUE(rig.report.Has("error: Marvo upgrade: BMB_APP_B failed, error=6"));
  EXPECT_EQ(rig.Items().partition, Partition::kA);
}

TEST(MarvoSensor, TakesTheJunctionBoxPackage) {
  SmallSensorRig rig("Marvo-KTC");
  const auto client = Connect(*rig.ktc, 1);
  ASSERT_TRUE(client);
  const Bytes package = NamedPackage(3000);
  std::string command = "0x83";
  std::atomic<std::uint32_t> progress{0};
  EXPECT_EQ(client->TransferFileByCmdText(package, command, progress), 0);
  EXPECT_EQ(rig.ktc->ReceivedPackage(), package);
  EXPECT_TRUE(rig.Firmware().empty());
}

// What the tool makes of a set of the spin rate.
struct Misbehaviour {
  const char* rule;
  int on_lines;
  int inside_ktc;
  bool is_carried_out;
};

constexpr int kStatus = 1000;  // and the sensor's status

int SetSpinRate(SerialExchange& exchange, std::uint8_t rate) {
  std::uint8_t status = 0;
  const int result = quarn::lidar::SetItem(exchange, quarn::lidar::kSpinRateItem, rate, status);
  return result != 0 || status == 0 ? result : kStatus + status;
}

TEST_P(EveryWay, MisbehavesByNameInACommand) {
  constexpr int kWrong = SerialExchange::kWrongReply;
  constexpr int kNotReceived = SerialExchange::kNotReceived;
  const std::vector<Misbehaviour> table = {
      {"ldcmd:10=late:30", 0, 0, true},
      {"ldcmd:10=split:8", 0, 0, true},
      {"ldcmd:10=noise:3000", 0, kWrong, true},
      {"ldcmd:10=wrong-echo:9", kWrong, kWrong, true},
      {"ldcmd-set:10=error:7", kStatus + 7, kStatus + 7, false},
      {"ldcmd:10=lying-length:-1", kWrong, kWrong, true},
      {"ldcmd:10=silence", kWrong, kNotReceived, true},
      {"ldcmd-get:10=silence", 0, 0, true},
      {"ldcmd:11=silence", 0, 0, true},
      {"ldcmd:10=pull", kNotReceived, kNotReceived, true},
  };
  ExchangeRig rig(GetParam());
  ASSERT_TRUE(rig.exchange);
  std::uint8_t rate = 20;
  for (const Misbehaviour& row : table) {
    SCOPED_TRACE(row.rule);
    rig.Behave();
    rig.Misbehave(row.rule);
    EXPECT_EQ(SetSpinRate(*rig.exchange, ++rate), IsKtc() ? row.inside_ktc : row.on_lines);
    EXPECT_EQ(rig.Items().spin_rate == rate, row.is_carried_out);
  }
  EXPECT_NE(SetSpinRate(*rig.exchange, rate), 0) << "what was pulled stays out";
}

// A transfer of three blocks.
struct TransferFault {
  const char* rule;
  int result;
  std::uint32_t progress;
};

TEST_P(EveryWay, MisbehavesByNameInATransfer) {
  const std::vector<TransferFault> table = {
      {"ota:1=late:700", 0, 3},
      {"ota:1=error:9", 9, 0},
      {"ota:2=error:7#3", 7, 2},
      {"ota:3=error", 1, 3},
      {"ota:1=wrong-echo#1", 0, 3},
      {"ota:2=wrong-echo#2", 0, 3},
      {"ota:3=wrong-echo#1", 0, 3},
      {"ota:2=wrong-echo", SerialExchange::kWrongReply, 0},
      {"ota:2=pull#2", SerialExchange::kNotSent, 1},
  };
  ExchangeRig rig(GetParam());
  ASSERT_TRUE(rig.exchange);
  const Bytes package = NamedPackage(2500);
  for (const TransferFault& row : table) {
    SCOPED_TRACE(row.rule);
    rig.Behave();
    rig.device().firmware.Clear();
    rig.Misbehave(row.rule);
    std::atomic<std::uint32_t> progress{0};
    EXPECT_EQ(quarn::lidar::SendOtaPackage(*rig.exchange, package, 0, progress), row.result);
    EXPECT_EQ(progress, row.progress);
    ASSERT_EQ(rig.Firmware().size(), row.result == 0 ? 1U : 0U);
    for (const ReceivedFirmware& firmware : rig.Firmware()) EXPECT_EQ(firmware.bytes, package);
  }
}

// Rules for every command count a request inside KTC once, and concern its carrier.
TEST(SmallSensorInKtc, CountsACarriedRequestOnce) {
  ExchangeRig rig("Zelto-KTC");
  rig.Misbehave("*=error:5#2");
  EXPECT_EQ(SetSpinRate(*rig.exchange, 1), 0);
  EXPECT_EQ(SetSpinRate(*rig.exchange, 2), 5);
  EXPECT_EQ(SetSpinRate(*rig.exchange, 3), 0);
  EXPECT_EQ(rig.device().log.All().size(), 2U);
}

TEST(SmallSensorInKtc, RefusesWhatIsNoFrame) {
  SmallSensorRig rig("Zelto-KTC");
  const auto client = Connect(*rig.ktc, 1);
  ASSERT_TRUE(client);
  Bytes cut = quarn::lidar::EncodeCommandFrame(3, Bytes{10, 1}, 5);
  cut.pop_back();
  cut.insert(cut.begin(), {0, 2});
  Bytes doubled = quarn::lidar::EncodeCommandFrame(3, Bytes{10, 1}, 5);
  doubled.insert(doubled.end(), doubled.begin(), doubled.end());
  doubled.insert(doubled.begin(), {0, 2});
  const std::vector<std::pair<Bytes, int>> table = {
      {cut, kBadSerialFrame},
      {doubled, kBadSerialFrame},
      {{0, 2}, kBadSerialFrame},
      {{0, 1, 7}, kWrongPayloadSize},
      {{0, 1, 0x39, 0}, kWrongPayloadSize},
      {{0, 1, 0x39, 0, 0, 0, 0}, kValueNotAllowed},
      {{0, 3}, kUnknownCommand},
      {{}, kUnknownCommand},
  };
  for (const auto& [payload, code] : table) {
    Bytes reply;
    EXPECT_NE(client->QueryCommand(payload, reply, 0xFF), 0);
    EXPECT_EQ(client->LastReturnCode(), code) << testing::PrintToString(payload);
  }
  EXPECT_TRUE(rig.device().log.All().empty());
  SimulatedSensor plain({.table_path = ModelTable("Quenta")});
  EXPECT_THROW(plain.device(), std::logic_error);
}

/// A line that is pulled while the tool waits on it.
struct Pull {
  const char* name;
  const char* rule;  ///< keeps the tool waiting
  std::function<int(SerialExchange&)> wait;
  void (SimulatedSmallSensor::*pull)();
  int result;
};

TEST(SmallSensorLines, EndAWaitWhenTheyArePulled) {
  const auto upgrade = [](SerialExchange& exchange) {
    std::atomic<std::uint32_t> progress{0};
    return quarn::lidar::SendOtaPackage(exchange, NamedPackage(5000), 0, progress);
  };
  const auto read = [](SerialExchange& exchange) {
    Bytes body;
    return exchange.QueryCommand(2, Bytes{10, 1}, body, 60'000);
  };
  for (const Pull& row :
       {Pull{"read", "ldcmd:10=late:600000", read, &SimulatedSmallSensor::PullRs485, -3},
        Pull{"upgrade", "ota:2=late:600000#2", upgrade, &SimulatedSmallSensor::PullUart, -1}}) {
    SCOPED_TRACE(row.name);
    ExchangeRig rig("Zelto");
    ASSERT_TRUE(rig.exchange);
    rig.Misbehave(row.rule);
    auto result = std::async(std::launch::async, row.wait, std::ref(*rig.exchange));
    const bool is_upgrade = row.result == -1;
    ASSERT_TRUE(rig.device().log.WaitFor([&](const SerialRequest& request) { return request.code == 2; },
                                         is_upgrade ? 2 : 1, kPatience));
    const auto start = std::chrono::steady_clock::now();
    (rig.lines.get()->*row.pull)();
    EXPECT_EQ(result.get(), row.result);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 900ms);

    const std::string old_path = rig.lines->uart_path();
    rig.lines->Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1800ms) << "an answer that is due holds nobody up";
    EXPECT_EQ(rig.lines->uart_path(), "");
    rig.Behave();
    rig.lines->Start();
    rig.Reconnect();
    ASSERT_TRUE(rig.exchange);
    EXPECT_EQ(SetSpinRate(*rig.exchange, 1), 0);
  }
}

}  // namespace
}  // namespace varkel::sim
