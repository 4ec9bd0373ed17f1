// The simulated small sensors as clients meet them, over two serial lines and inside KTC.
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/ota_transfer.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "libquarn/Source/src/serial_client.h"
#include "libquarn/Source/src/serial_source.h"
#include "simulator/src/return_code.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/simulator/sensor_rig.h"

namespace varkel::sim {
namespace {

using namespace std::chrono_literals;
using quarn::lidar::EncodeCommandFrame;
using quarn::lidar::ReplyKind;
using quarn::lidar::SerialExchange;

/// A simulated sensor and exchanges with it: "Zelto" has two lines, busy with point-cloud data, the others a
/// KTC port.
class Rig {
 public:
  explicit Rig(const std::string& model) {
    if (model != "Zelto") {
      ktc = std::make_unique<SimulatedSensor>(SensorOptions{.table_path = ModelTable(model)});
      ktc->Start();
      exchange = std::make_shared<quarn::lidar::KtcSerialClient>(Connect(*ktc, 1));
      return;
    }
    lines = std::make_unique<SimulatedSmallSensor>(SmallSensorOptions{.data_period = 1ms});
    lines->Start();
    using quarn::lidar::SerialSource;
    const auto replies = std::make_shared<SerialSource>(lines->rs485_path(), 115200, 3000000);
    const auto commands = std::make_shared<SerialSource>(lines->uart_path(), 9600, 9600);
    commands->SetAutoReceive(false);
    EXPECT_TRUE(replies->Open() && commands->Open());
    exchange = std::make_shared<quarn::lidar::SerialClient>(commands, replies);
  }

  SmallSensorDevice& device() const { return lines ? lines->device() : ktc->device(); }
  void Misbehave(const std::string& rule) const {
    lines ? lines->Behave() : ktc->Behave();
    lines ? lines->Misbehave(rule) : ktc->Misbehave(rule);
  }

  std::unique_ptr<SimulatedSmallSensor> lines;
  std::unique_ptr<SimulatedSensor> ktc;
  std::shared_ptr<SerialExchange> exchange;
};

constexpr int kStatus = 1000;  // and the sensor's status

int SetSpinRate(SerialExchange& exchange, std::uint8_t rate) {
  std::uint8_t status = 0;
  const int result = quarn::lidar::SetItem(exchange, quarn::lidar::kSpinRateItem, rate, status);
  return result != 0 || status == 0 ? result : kStatus + status;
}

class EveryWay : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Ways, EveryWay, testing::Values("Zelto", "Marvo-KTC"),
                         [](const auto& model) { return std::string(model.param).substr(0, 5); });

TEST_P(EveryWay, MisbehavesByNameInACommand) {
  constexpr int kWrong = SerialExchange::kWrongReply;
  constexpr int kNotReceived = SerialExchange::kNotReceived;
  const struct {
    const char* rule;
    int on_lines, inside_ktc;
    bool is_carried_out;
  } kCases[] = {
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
  Rig rig(GetParam());
  std::uint8_t rate = 20;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.rule);
    rig.Misbehave(c.rule);
    EXPECT_EQ(SetSpinRate(*rig.exchange, ++rate), rig.lines ? c.on_lines : c.inside_ktc);
    EXPECT_EQ(rig.device().state.Items().spin_rate == rate, c.is_carried_out);
  }
  EXPECT_NE(SetSpinRate(*rig.exchange, rate), 0) << "what was pulled stays out";
}

TEST_P(EveryWay, MisbehavesByNameInATransfer) {
  const struct {
    const char* rule;
    int result;
    std::uint32_t progress;
  } kCases[] = {
      {"ota:1=late:700", 0, 3},  // erasing takes its time
      {"ota:1=error:9", 9, 0},
      {"ota:2=error:7#3", 7, 2},
      {"ota:3=error", 1, 3},
      {"ota:1=wrong-echo#1", 0, 3},
      {"ota:2=wrong-echo#2", 0, 3},
      {"ota:2=wrong-echo", SerialExchange::kWrongReply, 0},
      {"ota:2=pull#2", SerialExchange::kNotSent, 1},
  };
  Rig rig(GetParam());
  const Bytes package(2500, 0xA5);  // three blocks
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.rule);
    rig.device().firmware.Clear();
    rig.Misbehave(c.rule);
    std::atomic<std::uint32_t> progress{0};
    EXPECT_EQ(quarn::lidar::SendOtaPackage(*rig.exchange, package, 0, progress), c.result);
    EXPECT_EQ(progress, c.progress);
    const auto received = rig.device().firmware.Received();
    ASSERT_EQ(received.size(), c.result == 0 ? 1U : 0U);
    EXPECT_TRUE(received.empty() || received[0].bytes == package);
  }
}

TEST(SmallSensorInKtc, RefusesWhatIsNoFrame) {
  Rig rig("Zelto-KTC");
  const auto client = Connect(*rig.ktc, 1);
  ASSERT_TRUE(client);
  Bytes doubled = EncodeCommandFrame(3, Bytes{10, 1}, 5);
  const Bytes cut(doubled.begin(), doubled.end() - 1);
  doubled.insert(doubled.end(), doubled.begin(), doubled.end());
  const auto carried = [](Bytes frame) {
    frame.insert(frame.begin(), {0, 2});
    return frame;
  };
  const std::pair<Bytes, int> kCases[] = {
      {carried(cut), kBadSerialFrame},
      {carried(doubled), kBadSerialFrame},
      {carried({}), kBadSerialFrame},
      {{0, 1, 7}, kWrongPayloadSize},
      {{0, 1, 0x39, 0}, kWrongPayloadSize},
      {{0, 1, 0x39, 0, 0, 0, 0}, kValueNotAllowed},
      {{0, 3}, kUnknownCommand},
      {{}, kUnknownCommand},
  };
  for (const auto& [payload, code] : kCases) {
    Bytes reply;
    EXPECT_NE(client->QueryCommand(payload, reply, 0xFF), 0);
    EXPECT_EQ(client->LastReturnCode(), code) << testing::PrintToString(payload);
  }
  EXPECT_TRUE(rig.device().log.All().empty());

  rig.Misbehave("*=error:5#2");  // counts a carried request once
  EXPECT_EQ(SetSpinRate(*rig.exchange, 1), 0);
  EXPECT_EQ(SetSpinRate(*rig.exchange, 2), 5);
  EXPECT_EQ(SetSpinRate(*rig.exchange, 3), 0);
  EXPECT_EQ(rig.device().log.All().size(), 2U);
}

TEST(SmallSensorDevice, TakesComponentsOnceItsModeWasChanged) {
  SmallSensorDevice device;
  const SerialRequest start{ReplyKind::kOta, 0x11, {}, 100, 2};
  EXPECT_EQ(device.handler.Handle(start).contents, Bytes{kOtaNotReady});
  EXPECT_EQ(device.handler.Handle({ReplyKind::kCommand, 3, {12, 4}, 0, 0}).contents, (Bytes{12, 0, 0}));
  EXPECT_EQ(device.handler.Handle(start).contents, Bytes{kOtaTaken});
  EXPECT_EQ(device.handler.Handle({ReplyKind::kCommand, 3, {99, 0}, 0, 0}).contents, (Bytes{99, 0, 1}));
}

struct Step {
  std::uint8_t type;
  std::uint32_t first, second;
  Bytes data;
  OtaStatus status;
};

TEST(OtaStore, TakesFramesOnlyInTheirOrder) {
  const Bytes first(1024, 1);
  const Bytes second(6, 2);
  Bytes all = first;
  all.insert(all.end(), second.begin(), second.end());
  const std::uint32_t crc = quarn::lidar::Crc32Mpeg2(all);
  const Step start{1, 1030, 0, {}, kOtaTaken};
  const Step block0{2, 0, 2, first, kOtaTaken};
  const Step block1{2, 1, 2, second, kOtaTaken};
  const Step end{3, crc, 1030, {}, kOtaTaken};
  const std::vector<std::vector<Step>> transfers = {
      {start, start, block0, block0, block1, block1, end, end},  // each frame twice
      {start, block0, start, block0, block1, end},               // begun anew
      {{2, 0, 2, first, kOtaWrongOrder}},
      {start, block0, {3, crc, 1030, {}, kOtaWrongOrder}},
      {start, {2, 1, 2, second, kOtaBadBlock}, {2, 0, 2, first, kOtaWrongOrder}},  // the fault ends it
      {start, block0, block1, {2, 0, 2, first, kOtaBadBlock}},
      {start, block0, {2, 0, 2, Bytes(1024, 9), kOtaBadBlock}},
      {start, {2, 0, 3, first, kOtaBadCount}},
      {start, {2, 0, 2, second, kOtaBadBlockSize}},
      {start, block0, {2, 1, 2, Bytes(7), kOtaBadBlockSize}},
      {start, block0, block1, {3, crc + 1, 1030, {}, kOtaBadChecksum}},
      {start, block0, block1, {3, crc, 1031, {}, kOtaBadLength}},
      {{1, 0xFFFFFFFF, 0, {}, kOtaBadLength}},
      {{1, 1030, 2, {}, kOtaBadPurpose}},
      {{0x11, 1030, 4, {}, kOtaBadPurpose}},
      {start, {0x12, 0, 2, first, kOtaWrongOrder}},
      {start, {4, 0, 0, {}, kOtaUnknownFrame}},
  };
  for (std::size_t i = 0; i < transfers.size(); ++i) {
    SCOPED_TRACE(i);
    OtaStore store;
    std::optional<ReceivedFirmware> completed;
    for (const Step& step : transfers[i]) {
      EXPECT_EQ(store.Receive({ReplyKind::kOta, step.type, step.data, step.first, step.second}, completed),
                step.status);
    }
    ASSERT_EQ(store.Received().size(), i < 2 ? 1U : 0U);
    EXPECT_TRUE(store.Received().empty() || store.Received()[0].bytes == all);
  }
}

}  // namespace
}  // namespace varkel::sim
