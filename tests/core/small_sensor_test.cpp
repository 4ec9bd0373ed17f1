#include "VarkelCore/src/small_sensor.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "VarkelCore/src/model_selection.h"
#include "VarkelCore/src/small_sensor_info.h"
#include "tests/core/small_sensor_bench.h"

namespace varkel {
namespace {

using test::Bytes;
using Command = test::ScriptedExchange::Command;
using Ktc = test::ScriptedLink::KtcRequest;
using Lines = std::vector<std::string>;

struct Bench {
  /// Answers commands with these contents (from the reply's byte 2 on), and KTC with this payload.
  void Answer(const Bytes& contents, int result = 0) {
    link.ktc->on_command = [contents, result](const Command&, Bytes& out) {
      out = contents;
      return result;
    };
  }
  void AnswerKtc(const Bytes& payload, int result = 0) {
    link.on_ktc = [payload, result](const Ktc&, Bytes& reply) {
      reply = payload;
      return result;
    };
  }
  std::vector<Command> Sent() { return std::exchange(link.ktc->commands, {}); }
  std::vector<Ktc> SentKtc() { return std::exchange(link.ktc_requests, {}); }

  test::RecordedReport report;
  test::ScriptedLink link;
  bool upgrading = false;
  int connect_type = kKtcToSmallSensor;
  SmallSensor sensor{report,
                     link,
                     {[this] { return upgrading; }, [this] { return connect_type; },
                      [this](int type) { connect_type = type; }}};
};

/// What is told of a function's code; nothing for 0.
Lines Told(const std::string& what, int code = -2) {
  const std::string text = what + " error, ret:" + std::to_string(code);
  return code == 0 ? Lines{} : Lines{"error: " + text, "ERROR " + text};
}

TEST(SmallSensor, SetsItems) {
  const struct {
    std::function<void(SmallSensor&)> call;
    Bytes payload;
    std::string what;
  } calls[] = {{[](auto& s) { s.SetStandby(0); }, {0, 0}, "mode"},
               {[](auto& s) { s.SetStandby(-1); }, {11, 0}, "mode"},
               {[](auto& s) { s.SetStandby(5); }, {11, 0}, "mode"},
               {[](auto& s) { s.SetSpinRate(300); }, {10, 44}, "spin rate"},
               {[](auto& s) { s.SetReturnMode(0); }, {8, 0}, "return mode"},
               {[](auto& s) { s.SetReturnMode(1); }, {9, 0}, "return mode"}};
  for (const auto& [call, payload, what] : calls) {
    const std::uint8_t item = payload[0];
    const struct {
      Bytes contents;
      int code;  ///< that the user is told of
      int result = 0;
    } replies[] = {{{item, 0, 0}, 0}, {{item, 0, 200}, 200}, {{item, 0, 0, 0}, -2}, {{item, 0}, -2},
                   {{}, -2},          {{7, 0, 0}, -2},       {{item, 0, 0}, -3, -3}};
    for (const auto& [contents, code, result] : replies) {
      Bench bench;
      bench.connect_type = kNetwork;
      bench.link.ktc->set_current_mode(99);
      bench.Answer(contents, result);
      call(bench.sensor);
      EXPECT_EQ(bench.Sent(), (std::vector<Command>{{3, payload}}));
      EXPECT_EQ(bench.report.Take(), Told("set lidar " + what, code));
      EXPECT_EQ(bench.connect_type, kKtcToSmallSensor);
      EXPECT_EQ(bench.link.ktc->current_mode(), what == "mode" && code == 0 ? item : 99);
    }
  }
}

TEST(SmallSensor, RefusesWithTheWordsOfTheFunction) {
  const Lines upgrade = {"error: lidar is not connected, or lidar is upgrade"};
  const Lines upgrading = {"error: lidar is not connected, or lidar is upgrading"};
  const auto only = [](const std::string& what) {
    return Lines{"error: " + what + " is only supported in KTC"};
  };
  const struct {
    std::function<void(SmallSensor&)> call;
    Lines not_ready;
    Lines not_ktc{};  ///< how it begins; nothing: the connection becomes KTC instead
  } cases[] = {{[](auto& s) { s.SetStandby(1); }, upgrade},
               {[](auto& s) { s.SetSpinRate(1); }, upgrade},
               {[](auto& s) { s.SetReturnMode(1); }, upgrade},
               {[](auto& s) { EXPECT_EQ(s.GetCorrection("/nowhere"), -1); }, upgrade},
               {[](auto& s) { EXPECT_TRUE(s.GetLidarFunctionSafety().empty()); }, upgrade},
               {[](auto& s) { s.SetImuRange(0, 0); }, upgrade, only("Marvo IMU range setting")},
               {[](auto& s) { EXPECT_EQ(s.GetBaudRate(), ""); }, upgrading, only("GetBaudRate")},
               {[](auto& s) { s.SetBaudRate("9600"); }, upgrading, only("SetBaudRate")},
               {[](auto& s) { EXPECT_TRUE(s.GetDestinationConfig(false).empty()); }, upgrading,
                only("GetDestinationConfig")},
               {[](auto& s) { EXPECT_FALSE(s.SetDestinationIPandPort("1.2.3.4", 5)); }, upgrading,
                only("SetDestinationIPandPort")}};
  for (const auto& [call, not_ready, not_ktc] : cases) {
    for (int obstacle = 0; obstacle < 3; ++obstacle) {
      Bench bench;
      bench.link.connected = obstacle != 0;
      bench.upgrading = obstacle == 1;
      if (obstacle == 2) bench.link.ktc = nullptr;
      call(bench.sensor);
      EXPECT_EQ(bench.report.Take(), not_ready);
      EXPECT_TRUE(bench.SentKtc().empty());
    }
    for (const int type : {kNetwork, kSerialLines}) {
      Bench bench;
      bench.connect_type = type;
      bench.link.connected = false;
      call(bench.sensor);
      const std::string told = bench.report.Take().at(0);
      EXPECT_TRUE(told.starts_with(not_ktc.empty() ? not_ready[0] : not_ktc[0])) << told;
      EXPECT_EQ(bench.connect_type, not_ktc.empty() ? kKtcToSmallSensor : type);
    }
  }
}

TEST(SmallSensor, SavesTheCorrectionFile) {
  const std::string path = "correction-\xC3\xA4.bin";
  Bench bench;
  const struct {
    Bytes reply;  ///< from byte 2 on
    Bytes file{};
    int result = -2;
  } cases[] = {{{7, 0, 3, 0xDE, 0x00, 0x0A, 9}, {0xDE, 0x00, 0x0A}, 0},
               {{7, 0, 0, 9}, {}, 0},
               {{7, 0, 2, 1, 2, 3, 4}},
               {{7, 0, 4, 1, 2, 3, 4}},
               {{7, 0, 255, 1}},
               {{7, 0, 0}},
               {{8, 0, 1, 1, 2}}};
  for (const auto& [reply, content, result] : cases) {
    bench.Answer(reply);
    EXPECT_EQ(bench.sensor.GetCorrection(path), result);
    EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {7}}}));
    EXPECT_EQ(bench.report.Take(), Told("get calibration", result));
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(file.is_open(), result == 0);
    EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(file), {}), content);
    std::remove(path.c_str());
  }
  bench.Answer({7, 0, 0, 9});
  EXPECT_EQ(bench.sensor.GetCorrection("no/such/folder/file.bin"), -1);
  const std::string text = "create calibration file fail, save correction file error";
  EXPECT_EQ(bench.report.Take(), (Lines{"error: " + text, "ERROR " + text}));
}

TEST(SmallSensor, ReadsFunctionSafety) {
  const std::pair<Bytes, Lines> cases[] = {
      {{8, 0xA1, 0}, {"Normal"}},
      {{8, 0xA1, 1, 0x0A, 0x00}, {"Warning", "0x000A"}},
      {{8, 0xA1, 2, 0x34, 0x12, 0xFF, 0xFF, 9}, {"Shutdown", "0x1234", "0xFFFF"}},
      {{8, 0xA1, 3}, {"3"}},
      {{8, 0xA2, 0}, {}},
      {{8, 0xA1}, {}},
      {{7, 0xA1, 0}, {}}};
  for (const auto& [reply, texts] : cases) {
    Bench bench;
    bench.Answer(reply);
    EXPECT_EQ(bench.sensor.GetLidarFunctionSafety(), texts);
    EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {8}}}));
    EXPECT_EQ(bench.report.Take(), Told("get function safety", texts.empty() ? -2 : 0));
  }
}

TEST(SmallSensor, ReadsAndSetsTheBaudRate) {
  Bench bench;
  bench.AnswerKtc({1, 2, 0xF0, 0x2F, 0xAF, 0x08});
  EXPECT_EQ(bench.sensor.GetBaudRate(), "4029656840");
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0xFF, {0, 1}, false}}));
  bench.AnswerKtc({1, 2, 3});
  EXPECT_EQ(bench.sensor.GetBaudRate(), "");
  EXPECT_EQ(bench.report.Take(), Told("get baud rate"));
  bench.SentKtc();
  for (const char* text : {"abc", "0", "", " ", "-1", "96o0", "9600 8", "4294967296", "0x10"}) {
    bench.sensor.SetBaudRate(text);
    EXPECT_EQ(bench.report.Take(), Lines{"error: invalid baud rate value"}) << text;
    EXPECT_TRUE(bench.SentKtc().empty());
  }
  bench.AnswerKtc({});
  bench.sensor.SetBaudRate(" 3125000 ");
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0xFF, {0, 1, 0x39, 0x00, 0x2F, 0xAF, 0x08}, false}}));
  EXPECT_EQ(bench.report.Take(), Lines{"success: set baud rate successful"});
}

TEST(SmallSensor, ReadsAndSetsTheDestination) {
  Bench bench;
  Bytes reply = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 192, 168, 0, 7, 0x09, 0x40};
  bench.AnswerKtc(reply);
  EXPECT_EQ(bench.sensor.GetDestinationConfig(true), (Lines{"192.168.0.7", "2368"}));
  reply.pop_back();
  bench.AnswerKtc(reply);
  EXPECT_EQ(bench.sensor.GetDestinationConfig(false), Lines{});
  EXPECT_EQ(bench.report.Take(), Told("get destination config"));
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0x08, {}, true}, {0x08, {}, false}}));

  EXPECT_TRUE(bench.sensor.SetDestinationIPandPort("10.0.0.255", 65535));
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0x20, {10, 0, 0, 255, 0xFF, 0xFF}, false}}));
  EXPECT_EQ(bench.report.Take(), Lines{"success: set destination IP and port successful"});
  const std::pair<const char*, int> wrong[] = {
      {"10.0.0", 1}, {"10.0.0.256", 1}, {"10.0.0.1.", 1}, {"10..0.1", 1},
      {"", 1},       {"10.0.0.x", 1},   {"10.0.0.1", -1}, {"10.0.0.1", 65536}};
  for (const auto& [ip, port] : wrong) {
    EXPECT_FALSE(bench.sensor.SetDestinationIPandPort(ip, port)) << ip;
    EXPECT_EQ(bench.report.Take(), Told("set destination IP and port", -1)) << ip;
    EXPECT_TRUE(bench.SentKtc().empty());
  }
}

TEST(SmallSensor, SetsTheImuRange) {
  const Lines done = {"success: IMU range set successfully"};
  const Lines angular_wrong = {"error: Invalid angular range index"};
  const Lines accel_wrong = {"error: Invalid acceleration range index"};
  const struct {
    int angular, accel;
    std::vector<Command> sent;
    Lines told;
    Bytes reply = {11, 0, 0, 0};
  } cases[] = {{0, 0, {{2, {11, 0, 0}}}, done},
               {4, 2, {{2, {11, 4, 2}}}, done},
               {5, 3, {{2, {11, 8, 3}}}, done},
               {6, 9, {}, angular_wrong},
               {-1, 0, {}, angular_wrong},
               {0, 4, {}, accel_wrong},
               {0, -1, {}, accel_wrong},
               {0, 0, {{2, {11, 0, 0}}}, Told("set IMU range"), {11, 0, 0}},
               {0, 0, {{2, {11, 0, 0}}}, Told("set IMU range"), {11, 0, 0, 0, 0}},
               {0, 0, {{2, {11, 0, 0}}}, Told("set IMU range"), {10, 0, 0, 0}}};
  for (const auto& [angular, accel, sent, told, reply] : cases) {
    Bench bench;
    bench.Answer(reply);
    bench.sensor.SetImuRange(angular, accel);
    EXPECT_EQ(bench.Sent(), sent);
    EXPECT_EQ(bench.report.Take(), told);
  }
}

// ---- What the sensor says of itself

struct InfoBench : Bench {
  explicit InfoBench(const std::string& model) { info.SetModel(model); }

  /// Versions by their index, a serial number, a destination.
  void AnswerAll(const std::string& serial_number) {
    link.ktc->on_command = [serial_number](const Command& command, Bytes& contents) {
      const bool version = command.payload[0] == 15;
      const std::string text = version ? "1.2." + std::to_string(command.payload[1]) : serial_number;
      contents = {command.payload[0], 0};
      contents.insert(contents.end(), text.begin(), text.end());
      if (version) contents.resize(28);
      return 0;
    };
    AnswerKtc({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 80});
  }
  /// What a round tells.
  Lines Round() {
    info.Round(std::stop_token());
    return report.Take();
  }

  SmallSensorInfo info{report,
                       link,
                       {[this] { return upgrading; }, [this] { report.Add("changed"); },
                        [this] { report.Add(info.is_getting_pbl_version() ? "pbl begins" : "pbl ends"); }}};
};

TEST(SmallSensorInfo, ShowsPlaceholdersThenWhatWasRead) {
  InfoBench bench("Zelto-KTC");
  using Rows = std::vector<InfoRow>;
  EXPECT_EQ(bench.info.Info(),
            (Rows{{"Serial Number", "xxxxxxxx"}, {"Destination IP", "xx.xx.xx.xx"}, {"UDP Port", "xx"}}));
  EXPECT_EQ(bench.info.Versions(), (Rows{{"PBL Version", "xxxxxxxx"}}));
  bench.AnswerAll(std::string("Z-0042\0\0", 8));
  EXPECT_EQ(bench.Round(), (Lines{"changed", "changed", "changed", "pbl begins", "changed", "pbl ends"}));
  EXPECT_EQ(bench.info.Info(),
            (Rows{{"Serial Number", "Z-0042"}, {"Destination IP", "10.0.0.0"}, {"UDP Port", "80"}}));
  EXPECT_EQ(bench.info.Versions(), (Rows{{"PBL Version", "1.2.5"}}));
  Bytes version_request = {15, 5};
  version_request.resize(27);
  EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {10, 1}}, {2, version_request}}));
  for (const Ktc& request : bench.SentKtc()) EXPECT_TRUE(request.silent);

  EXPECT_EQ(bench.Round(), Lines{});  // nothing new, and the PBL version is not asked for again
  EXPECT_EQ(bench.Sent().size(), 1U);
  bench.info.Reset();
  EXPECT_EQ(bench.info.Info()[0].value, "xxxxxxxx");
  bench.upgrading = true;
  bench.Round();
  bench.upgrading = false;
  bench.link.connected = false;
  bench.Round();
  EXPECT_TRUE(bench.Sent().empty());

  InfoBench marvo("Marvo-KTC");
  marvo.AnswerAll("M1");
  marvo.info.ReadMarvoVersions();
  marvo.Round();
  EXPECT_EQ(
      marvo.info.Versions(),
      (Rows{{"BMB FPGA Version", "1.2.0"}, {"TMB FPGA Version", "1.2.1"}, {"BMB MCU Version", "1.2.2"}}));
  EXPECT_EQ(marvo.Sent().size(), 4U);

  InfoBench lines("Zelto");
  lines.AnswerAll("Z1");
  lines.link.lines = std::exchange(lines.link.ktc, nullptr);
  lines.Round();
  EXPECT_TRUE(lines.SentKtc().empty());
  EXPECT_EQ(lines.info.Info(), (Rows{{"Serial Number", "Z1"}}));
  EXPECT_EQ(lines.info.Versions()[0].value, "1.2.5");
}

TEST(SmallSensorInfo, LogsAFailingQueryOnce) {
  InfoBench bench("Marvo-KTC");
  bench.Answer({}, -3);
  bench.info.ReadMarvoVersions();
  EXPECT_EQ(bench.report.Take(), (Lines{"ERROR Failed to get BMB FPGA version, ret:-3",
                                        "ERROR Failed to get TMB FPGA version, ret:-3",
                                        "ERROR Failed to get BMB MCU version, ret:-3"}));
  EXPECT_EQ(bench.info.Versions()[0].value, "xxxxxxxx");
  EXPECT_EQ(bench.Round(), Lines{"ERROR Zelto-KTC get SN failed, ret:-3"});
  EXPECT_EQ(bench.Round(), Lines{});
  for (const std::string& serial :
       {std::string(), std::string(2, '\0'), std::string("A\a"), std::string("A\x80")}) {
    bench.Answer({}, -3);
    bench.Round();  // another failure in between, so that each of these is news
    bench.AnswerAll(serial);
    bench.AnswerKtc({}, -3);
    EXPECT_EQ(bench.Round(), Lines{"ERROR Zelto-KTC SN invalid after validation"});
    EXPECT_EQ(bench.info.Info()[0].value, "xxxxxxxx");
  }
  InfoBench pbl("Zelto");
  pbl.Answer({}, -2);
  EXPECT_EQ(pbl.Round(), (Lines{"ERROR Zelto-KTC get SN failed, ret:-2", "pbl begins",
                                "ERROR get pbl version error, ret:-2", "pbl ends"}));
}

}  // namespace
}  // namespace varkel
