// The simulated small sensors as clients meet them, over two serial lines and inside KTC; every other
// function meets their misbehaviours among the tests of faults.
#include <gtest/gtest.h>

#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "libquarn/Source/src/serial_client.h"
#include "libquarn/Source/src/serial_source.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/simulator/sensor_rig.h"

namespace varkel::sim {
namespace {

using namespace std::chrono_literals;
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

}  // namespace
}  // namespace varkel::sim
