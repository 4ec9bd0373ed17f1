#include "simulator/src/sensor_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/simulator/test_table.h"

namespace varkel::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;
using namespace std::chrono_literals;

constexpr char kRows[] =
    "1,2,0x31,0x41,2,Port,uint16,258,2,,,,\n"
    "1,1,0x31,0x41,1,Address,IP,10.0.0.1,4,,,,\n"
    "1,3,0x31,,,Board,string,QN,4,,,,\n"
    "2,1,0x00010203,0x00010204,1,Angle,int16,-1.50,2,0.5,,,\n"
    "3,1,0x32,,,Temperature,int16,40.00,2,0.1,,1,\n"
    "3,2,0x32,,,Run Time,DT,0 h 0 min 58 s,4,,,1,\n"
    "3,3,0x32,,,Frame Count,uint32,7,4,,,1,\n"
    "3,4,0x32,,,Voltage,float32,12.00,4,,,1,\n"
    "3,5,0x32,,,Zero,uint8,0,1,,,1,\n"
    "4,1,0x33,0x43,1,Shared Secret Key,string,abc,16,,,,\n";

class SensorStateTest : public testing::Test {
 protected:
  TestTable table_{kRows};
  std::chrono::milliseconds now_{0};
  SensorState state_{LoadTable(table_.path()), [this] { return now_; }};
};

TEST_F(SensorStateTest, LaysOutRepliesAsTheTableSays) {
  EXPECT_EQ(state_.Read("0x31"), Bytes({10, 0, 0, 1, 1, 2, 'Q', 'N', 0, 0}));
  EXPECT_EQ(state_.Read("0x00010203"), Bytes({0, 0, 0, 0, 0xFF, 0xFD})) << "the code's four bytes come first";
}

TEST_F(SensorStateTest, StoresSetPayloadsOfTheRightSize) {
  EXPECT_FALSE(state_.Write("0x41", Bytes(5)));
  EXPECT_FALSE(state_.Write("0x41", Bytes(7)));
  EXPECT_EQ(state_.ValueText("Address"), "10.0.0.1");
  EXPECT_TRUE(state_.Write("0x41", Bytes({192, 168, 1, 9, 0, 80})));
  EXPECT_EQ(state_.ValueText("Address"), "192.168.1.9");
  EXPECT_EQ(state_.ValueText("Port"), "80");
  EXPECT_TRUE(state_.Write("0x00010204", Bytes({0, 3})));
  EXPECT_EQ(state_.ValueText("Angle"), "1.50");
}

TEST_F(SensorStateTest, TakesASecretKeyOfAnyLength) {
  EXPECT_EQ(state_.Read("0x33"), Bytes({'a', 'b', 'c'}));
  EXPECT_TRUE(state_.Write("0x43", Bytes(40, 'k')));
  EXPECT_EQ(state_.Read("0x33"), Bytes(40, 'k'));
}

TEST_F(SensorStateTest, LiveValuesMoveGentlyWithTheClock) {
  EXPECT_EQ(state_.ValueText("Temperature"), "40.00");
  EXPECT_EQ(state_.ValueText("Voltage"), "12.00");
  bool moved = false;
  for (now_ = 0ms; now_ < 100'000ms; now_ += 500ms) {
    const double temperature = std::stod(state_.ValueText("Temperature"));
    const double voltage = std::stod(state_.ValueText("Voltage"));
    moved = moved || (temperature != 40.0 && voltage != 12.0);
    EXPECT_NEAR(temperature, 40.0, 0.85);
    EXPECT_NEAR(voltage, 12.0, 0.25);
    const std::string zero = state_.ValueText("Zero");
    EXPECT_TRUE(zero == "0" || zero == "1") << "an unsigned field never wraps to " << zero;
    EXPECT_EQ(state_.ValueText("Port"), "258") << "only values that the page timer re-reads move";
  }
  EXPECT_TRUE(moved);
}

TEST_F(SensorStateTest, TimesAndCountersRunUp) {
  now_ = 3'602'999ms;
  EXPECT_EQ(state_.ValueText("Run Time"), "1 h 1 min 0 s");
  EXPECT_EQ(state_.ValueText("Frame Count"), "367");
}

TEST_F(SensorStateTest, SetValuesStandStill) {
  state_.SetValue("Temperature", "-3.20");
  now_ = 7'000ms;
  EXPECT_EQ(state_.ValueText("Temperature"), "-3.20");
  EXPECT_THROW(state_.SetValue("Temperature", "hot"), std::invalid_argument);
  EXPECT_THROW(state_.SetValue("Pressure", "1"), std::out_of_range);
  EXPECT_THROW(state_.ValueText("Pressure"), std::out_of_range);
}

TEST(SensorState, NamesTheVariableOfABadDefault) {
  for (const char* row :
       {"1,1,0x31,,,Broken,uint8,300,1,,,,\n", "1,1,0x31,,,Broken,uint8,1,2000000000,,,,\n"}) {
    try {
      const TestTable table(row);
      const SensorState state(LoadTable(table.path()), [] { return 0ms; });
      ADD_FAILURE() << "accepted " << row;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr("1-1 \"Broken\""));
    }
  }
}

}  // namespace
}  // namespace varkel::sim
