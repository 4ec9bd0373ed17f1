#include "simulator/src/command_handler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/command_text.h"
#include "simulator/src/sensor_state.h"
#include "tests/simulator/piece_frame.h"
#include "tests/simulator/test_table.h"

namespace varkel::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;
using namespace std::chrono_literals;

constexpr char kRows[] =
    "0,Page,Group,,,,,,,,,,\n"
    "1,1,0x31,0x41,1,Port,uint16,258,2,,,,\n"
    "1,2,0x34,,,Channel 3,uint8,9,1,,,,0x0003\n"
    "2,1,0x00010203,0x00010204,1,Angle,uint16,5,2,,,,\n"
    "3,1,0x23,0x22,1,Channels,uint8,2,1,,1_1_1_5,,\n"
    "4,1,,0x10,1,Restart,raw,,0,,1_1_1_6,,\n"
    "4,2,0x60,,,Fault Log,raw,,0,,1_1_2_6,,0x01\n"
    "4,3,,0x70,1,Firmware,raw,,0,,1_1_3_4,,\n"
    "4,4,0x61,,,operation log,raw,,0,,0_0_0_6,,0x05\n"
    "4,5,0x00010206,,,Event Log,raw,,0,,0_0_0_6,,\n"
    "4,6,0x25,,,Reset,raw,,0,,0_0_0_6,,\n"
    "4,7,0x71,,,Boot Firmware,raw,,0,,1_1_3_4,,\n"
    "4,8,0x62,,,Calibrate,raw,,0,,0_0_0_6,,\n"
    "4,9,,0x00010207,1,Second Firmware,raw,,0,,1_1_3_4,,\n"
    "5,1,0x35,0x35,1,Both Ways,uint8,6,1,,,,\n";

class CommandHandlerTest : public testing::Test {
 protected:
  Reply Send(std::uint8_t command, Bytes payload = {}) {
    return handler_.Handle({1, command, std::move(payload)});
  }

  TestTable table_{kRows};
  std::shared_ptr<const ConfigParser> model_ = LoadTable(table_.path());
  SensorState state_{model_, [] { return 0ms; }};
  FirmwareStore firmware_;
  CommandHandler handler_{model_, state_, firmware_};
};

struct Case {
  std::string what;
  std::uint8_t command;
  Bytes payload;
  std::uint8_t return_code;
  Bytes reply;
};

TEST_F(CommandHandlerTest, AnswersEveryKindOfCommand) {
  const std::vector<Case> cases = {
      {"read", 0x31, {}, kSuccess, {1, 2}},
      {"read with an unexpected payload", 0x31, {9}, kWrongPayloadSize, {}},
      {"read with its payload", 0x34, {0, 3}, kSuccess, {9}},
      {"read without its payload", 0x34, {}, kWrongPayloadSize, {}},
      {"write", 0x41, {3, 4}, kSuccess, {}},
      {"what was written", 0x31, {}, kSuccess, {3, 4}},
      {"short write", 0x41, {3}, kWrongPayloadSize, {}},
      {"long write", 0x41, {3, 4, 5}, kWrongPayloadSize, {}},
      {"empty write", 0x41, {}, kWrongPayloadSize, {}},
      {"write of a command that also reads", 0x35, {7}, kSuccess, {}},
      {"read of a command that also writes", 0x35, {}, kSuccess, {7}},
      {"four-byte read", 0xFF, {0, 1, 2, 3}, kSuccess, {0, 1, 2, 3, 0, 5}},
      {"four-byte write", 0xFF, {0, 1, 2, 4, 0, 8}, kSuccess, {0, 1, 2, 4}},
      {"what was written under four bytes", 0xFF, {0, 1, 2, 3}, kSuccess, {0, 1, 2, 3, 0, 8}},
      {"short four-byte write", 0xFF, {0, 1, 2, 4, 0}, kWrongPayloadSize, {}},
      {"unknown four-byte command", 0xFF, {0, 1, 2, 5}, kUnknownCommand, {}},
      {"cut four-byte command", 0xFF, {0, 1, 2}, kUnknownCommand, {}},
      {"unknown command", 0x99, {}, kUnknownCommand, {}},
      {"probe that no table row answers", 0x07, {}, kSuccess, {}},
      {"second probe", 0x08, {}, kSuccess, {}},
      {"upgrade without a piece", 0x70, Bytes(1048), kBadPieceFrame, {}},
      {"four-byte upgrade without a piece", 0xFF, {0, 1, 2, 7}, kBadPieceFrame, {}},
      {"operation log without a selector", 0x61, {5}, kWrongPayloadSize, {}},
      {"operation log with a cut selector", 0x61, {5, 0}, kWrongPayloadSize, {}},
      {"operation log of an unknown kind", 0x61, {5, 2, 0}, kWrongPayloadSize, {}},
      {"operation log of unknown software", 0x61, {5, 0, 2}, kWrongPayloadSize, {}},
  };
  for (const Case& one : cases) {
    const Reply reply = Send(one.command, one.payload);
    EXPECT_EQ(int{reply.return_code}, int{one.return_code}) << one.what;
    EXPECT_EQ(reply.payload, one.reply) << one.what;
  }
}

TEST_F(CommandHandlerTest, AnswersEachLogWithItsOwnContent) {
  const std::vector<std::pair<std::uint8_t, Bytes>> requests = {{0x61, {5, 0, 0}}, {0x61, {5, 0, 1}},
                                                                {0x61, {5, 1, 0}}, {0x61, {5, 1, 1}},
                                                                {0x60, {1}},       {0xFF, {0, 1, 2, 6}}};
  std::set<Bytes> contents;
  for (const auto& [command, payload] : requests) {
    const Reply reply = Send(command, payload);
    SCOPED_TRACE(testing::PrintToString(payload));
    EXPECT_EQ(reply.return_code, kSuccess);
    EXPECT_GT(reply.payload.size(), 1024U);
    EXPECT_LT(reply.payload.size(), 10240U) << "clients find longer replies odd";
    EXPECT_EQ(Send(command, payload).payload, reply.payload);
    const std::size_t code_size = command == 0xFF ? 4 : 0;
    EXPECT_TRUE(std::equal(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(code_size),
                           reply.payload.begin()));
    EXPECT_TRUE(std::all_of(reply.payload.begin() + static_cast<std::ptrdiff_t>(code_size),
                            reply.payload.end(),
                            [](std::uint8_t byte) { return byte == '\n' || (byte >= ' ' && byte < 0x7F); }));
    EXPECT_EQ(reply.payload.back(), '\n');
    contents.insert(reply.payload);
  }
  EXPECT_EQ(contents.size(), requests.size()) << "two logs are the same";
}

TEST_F(CommandHandlerTest, RestartsAfterRestartAndResetOnly) {
  EXPECT_EQ(Send(0x41, {3, 4}).return_code, kSuccess);
  EXPECT_EQ(Send(0x22, {3, 0, 10, 0, 20, 1, 0x2C, 0, 40, 0x0E, 0x10}).return_code, kSuccess);
  EXPECT_TRUE(Send(0x10).restarts);
  EXPECT_EQ(Send(0x31).payload, Bytes({3, 4})) << "a restart keeps the settings";
  EXPECT_FALSE(Send(0x31).restarts);
  EXPECT_FALSE(Send(0x62).restarts) << "an action that means nothing to the sensor";

  const Reply reset = Send(0x25);
  EXPECT_TRUE(reset.restarts);
  EXPECT_EQ(reset.return_code, kSuccess);
  EXPECT_EQ(Send(0x31).payload, Bytes({1, 2}));
  EXPECT_EQ(Send(0x23).payload, Bytes({2, 0, 0, 0x0E, 0x10, 0, 0, 0x0E, 0x10}));
}

TEST_F(CommandHandlerTest, TakesPackagesUnderTheOnlyCommandOfAnUpgradeRow) {
  for (const std::uint8_t command : {std::uint8_t{0x70}, std::uint8_t{0x71}}) {
    const Bytes package = {'p', command};
    EXPECT_EQ(Send(command, PieceFrame(command, {.data = package})).return_code, kSuccess);
    EXPECT_EQ(firmware_.Package(), package);
  }
}

TEST_F(CommandHandlerTest, KeepsTheFieldOfView) {
  EXPECT_EQ(Send(0x23).payload, Bytes({2, 0, 0, 0x0E, 0x10, 0, 0, 0x0E, 0x10}));
  const Bytes write = {3, 0, 10, 0, 20, 1, 0x2C, 0, 40, 0x0E, 0x10};
  EXPECT_EQ(Send(0x22, write).return_code, kSuccess);
  EXPECT_EQ(Send(0x23).payload, Bytes({3, 0, 10, 0x0E, 0x10, 0, 20, 0x0E, 0x10, 1, 0x2C, 0x0E, 0x10}));
  EXPECT_EQ(state_.ValueText("Channels"), "3");

  Bytes bad = write;
  bad[0] = 6;
  EXPECT_EQ(Send(0x22, bad).return_code, kValueNotAllowed);
  bad = write;
  bad.back() = 0x11;  // 360.1 degrees
  EXPECT_EQ(Send(0x22, bad).return_code, kValueNotAllowed);
  EXPECT_EQ(Send(0x22, {3}).return_code, kWrongPayloadSize);
  EXPECT_EQ(Send(0x23).payload[0], 3) << "refused writes change nothing";
}

TEST(CommandHandler, NamesACommandThatIsNoNumber) {
  const TestTable table("1,1,get,,,Odd,uint8,1,1,,,,\n");
  const auto model = LoadTable(table.path());
  SensorState state(model, [] { return 0ms; });
  FirmwareStore firmware;
  EXPECT_THROW(CommandHandler(model, state, firmware), std::runtime_error);
}

// The real tables.

class ModelTest : public testing::TestWithParam<const char*> {
 protected:
  ReceivedRequest Request(const std::string& command, const Bytes& payload) const {
    const Command parsed = ParseCommandText(command);
    return {1, parsed.code, RequestPayload(parsed, payload)};
  }

  std::shared_ptr<const ConfigParser> model_ = LoadTable(ModelTable(GetParam()));
  SensorState state_{model_, [] { return 0ms; }};
  FirmwareStore firmware_;
  CommandHandler handler_{model_, state_, firmware_};
};

TEST_P(ModelTest, EveryVariableReadsAsItsDefaultAtPowerUp) {
  for (const auto& [command, vars] : model_->get_cmd_map()) {
    if (vars.front()->component_type == kStandalone) continue;
    const Reply reply = handler_.Handle(Request(command, vars.front()->get_cmd_payload_bytes));
    ASSERT_EQ(reply.return_code, kSuccess) << command;
    for (const VarInfo* var : vars) {
      ASSERT_LE(var->get_start_pos + var->var_len, reply.payload.size()) << var->var_name;
      EXPECT_EQ(state_.ValueText(var->var_name), var->default_val) << var->var_id << " " << var->var_name;
    }
  }
}

TEST_P(ModelTest, WhatIsSetReadsBack) {
  for (const auto& [command, vars] : model_->set_cmd_map()) {
    const auto size = state_.SetSize(command);
    if (command == "0x22" || !size || *size == 0) continue;
    Bytes payload(*size);
    std::iota(payload.begin(), payload.end(), std::uint8_t{0x21});
    if (handler_.Handle(Request(command, payload)).return_code != kSuccess) ADD_FAILURE() << command;
    for (const VarInfo* var : vars) {
      if (var->get_cmd.empty()) continue;
      const Bytes reply = handler_.Handle(Request(var->get_cmd, var->get_cmd_payload_bytes)).payload;
      const auto written = std::span(payload).subspan(var->set_start_pos, var->var_len);
      const auto read = std::span(reply).subspan(var->get_start_pos, var->var_len);
      EXPECT_TRUE(std::equal(written.begin(), written.end(), read.begin()))
          << var->var_id << " " << var->var_name;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Models, ModelTest, testing::Values("Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"),
                         [](const auto& tested) {
                           std::string name = tested.param;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace varkel::sim
