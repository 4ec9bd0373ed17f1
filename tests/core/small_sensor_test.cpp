#include "VarkelCore/src/small_sensor.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
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
  /// Answers the next command with these contents (from the reply's byte 2 on).
  void Answer(Bytes contents, int result = 0) {
    link.ktc->on_command = [contents, result](const Command&, Bytes& out) {
      out = contents;
      return result;
    };
  }
  void AnswerKtc(Bytes reply_bytes, int result = 0) {
    link.on_ktc = [reply_bytes, result](const Ktc&, Bytes& reply) {
      reply = reply_bytes;
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

Lines Failure(const std::string& text) {
  return {"error: " + text, "ERROR " + text};
}

TEST(SmallSensor, SetsItems) {
  struct Case {
    std::function<void(SmallSensor&)> call;
    Bytes payload;
    std::string prefix;
  };
  const std::vector<Case> cases = {
      {[](SmallSensor& s) { s.SetStandby(0); }, {0, 0}, "set lidar mode error, ret:"},
      {[](SmallSensor& s) { s.SetStandby(-1); }, {11, 0}, "set lidar mode error, ret:"},
      {[](SmallSensor& s) { s.SetStandby(5); }, {11, 0}, "set lidar mode error, ret:"},
      {[](SmallSensor& s) { s.SetSpinRate(300); }, {10, 44}, "set lidar spin rate error, ret:"},
      {[](SmallSensor& s) { s.SetReturnMode(0); }, {8, 0}, "set lidar return mode error, ret:"},
      {[](SmallSensor& s) { s.SetReturnMode(1); }, {9, 0}, "set lidar return mode error, ret:"},
  };
  for (const Case& c : cases) {
    struct Reply {
      Bytes contents;
      int result;
      Lines lines;
    };
    const std::uint8_t item = c.payload[0];
    const auto other = static_cast<std::uint8_t>(item + 1);
    const std::vector<Reply> replies = {
        {{item, 0, 0}, 0, {}},
        {{item, 0, 200}, 0, Failure(c.prefix + "200")},
        {{item, 0, 0, 0}, 0, Failure(c.prefix + "-2")},
        {{item, 0}, 0, Failure(c.prefix + "-2")},
        {{}, 0, Failure(c.prefix + "-2")},
        {{other, 0, 0}, 0, Failure(c.prefix + "-2")},
        {{item, 0, 0}, -3, Failure(c.prefix + "-3")},
    };
    for (const Reply& reply : replies) {
      Bench bench;
      bench.connect_type = kNetwork;
      bench.Answer(reply.contents, reply.result);
      c.call(bench.sensor);
      EXPECT_EQ(bench.Sent(), (std::vector<Command>{{3, c.payload}}));
      EXPECT_EQ(bench.report.Take(), reply.lines);
      EXPECT_EQ(bench.connect_type, kKtcToSmallSensor);
    }
  }
}

TEST(SmallSensor, RemembersTheModeThatWasSet) {
  Bench bench;
  bench.Answer({11, 0, 0});
  bench.sensor.SetStandby(1);
  EXPECT_EQ(bench.link.ktc->current_mode(), 11);
  bench.Answer({0, 0, 1});  // refused
  bench.sensor.SetStandby(0);
  EXPECT_EQ(bench.link.ktc->current_mode(), 11);
  bench.Answer({0, 0, 0});
  bench.sensor.SetStandby(0);
  EXPECT_EQ(bench.link.ktc->current_mode(), 0);
}

TEST(SmallSensor, RefusesWithTheWordsOfTheFunction) {
  const std::string kUpgrade = "error: lidar is not connected, or lidar is upgrade";
  const std::string kUpgrading = "error: lidar is not connected, or lidar is upgrading";
  struct Case {
    std::function<void(SmallSensor&)> call;
    std::string not_ready;
    std::string not_ktc;  ///< empty: becomes KTC instead
  };
  const std::vector<Case> cases = {
      {[](SmallSensor& s) { s.SetStandby(1); }, kUpgrade, ""},
      {[](SmallSensor& s) { s.SetSpinRate(1); }, kUpgrade, ""},
      {[](SmallSensor& s) { s.SetReturnMode(1); }, kUpgrade, ""},
      {[](SmallSensor& s) { EXPECT_EQ(s.GetCorrection("/nowhere"), -1); }, kUpgrade, ""},
      {[](SmallSensor& s) { EXPECT_TRUE(s.GetLidarFunctionSafety().empty()); }, kUpgrade, ""},
      {[](SmallSensor& s) { s.SetImuRange(0, 0); }, kUpgrade,
       "error: Marvo IMU range setting is only supported in KTC_SERIAL mode"},
      {[](SmallSensor& s) { EXPECT_EQ(s.GetBaudRate(), ""); }, kUpgrading,
       "error: GetBaudRate is only supported in KTC serial mode"},
      {[](SmallSensor& s) { s.SetBaudRate("9600"); }, kUpgrading,
       "error: SetBaudRate is only supported in KTC serial mode"},
      {[](SmallSensor& s) { EXPECT_TRUE(s.GetDestinationConfig(false).empty()); }, kUpgrading,
       "error: GetDestinationConfig is only supported in KTC serial mode"},
      {[](SmallSensor& s) { EXPECT_FALSE(s.SetDestinationIPandPort("1.2.3.4", 5)); }, kUpgrading,
       "error: SetDestinationIPandPort is only supported in KTC serial mode"},
  };
  const std::vector<std::function<void(Bench&)>> obstacles = {
      [](Bench& b) { b.link.connected = false; },
      [](Bench& b) { b.upgrading = true; },
      [](Bench& b) { b.link.ktc = nullptr; },
  };
  for (const Case& c : cases) {
    for (const auto& obstruct : obstacles) {
      Bench bench;
      obstruct(bench);
      c.call(bench.sensor);
      EXPECT_EQ(bench.report.Take(), Lines{c.not_ready});
      EXPECT_TRUE(bench.SentKtc().empty());
    }
    for (const int type : {kNetwork, kSerialLines}) {
      Bench bench;
      bench.connect_type = type;
      bench.link.connected = false;
      c.call(bench.sensor);
      EXPECT_EQ(bench.report.Take(), Lines{c.not_ktc.empty() ? c.not_ready : c.not_ktc});
      EXPECT_EQ(bench.connect_type, c.not_ktc.empty() ? kKtcToSmallSensor : type);
    }
  }
}

TEST(SmallSensor, SavesTheCorrectionFile) {
  const std::string path = "correction-\xC3\xA4.bin";
  const auto contents = [&path]() -> Bytes {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  };
  Bench bench;
  struct Case {
    Bytes reply;  ///< from byte 2 on
    int result;
    Bytes file;
  };
  const std::vector<Case> cases = {
      {{7, 0, 3, 0xDE, 0x00, 0x0A, 9}, 0, {0xDE, 0x00, 0x0A}},
      {{7, 0, 0, 9}, 0, {}},
      {{7, 0, 2, 1, 2, 3, 4}, -2, {}},
      {{7, 0, 4, 1, 2, 3, 4}, -2, {}},
      {{7, 0, 255, 1}, -2, {}},
      {{7, 0, 0}, -2, {}},
      {{8, 0, 1, 1, 2}, -2, {}},
  };
  for (const Case& c : cases) {
    bench.Answer(c.reply);
    EXPECT_EQ(bench.sensor.GetCorrection(path), c.result);
    EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {7}}}));
    EXPECT_EQ(bench.report.Take(), c.result == 0 ? Lines{} : Failure("get calibration error, ret:-2"));
    EXPECT_EQ(contents(), c.file);
    std::remove(path.c_str());
  }
  bench.Answer(cases[0].reply);
  EXPECT_EQ(bench.sensor.GetCorrection("no/such/folder/file.bin"), -1);
  EXPECT_EQ(bench.report.Take(), Failure("create calibration file fail, save correction file error"));
}

TEST(SmallSensor, ReadsFunctionSafety) {
  struct Case {
    Bytes reply;
    Lines texts;  ///< empty: refused
  };
  const std::vector<Case> cases = {
      {{8, 0xA1, 0}, {"Normal"}},
      {{8, 0xA1, 1, 0x0A, 0x00}, {"Warning", "0x000A"}},
      {{8, 0xA1, 2, 0x34, 0x12, 0xFF, 0xFF, 9}, {"Shutdown", "0x1234", "0xFFFF"}},
      {{8, 0xA1, 3}, {"3"}},
      {{8, 0xA2, 0}, {}},
      {{8, 0xA1}, {}},
      {{7, 0xA1, 0}, {}},
  };
  for (const Case& c : cases) {
    Bench bench;
    bench.Answer(c.reply);
    EXPECT_EQ(bench.sensor.GetLidarFunctionSafety(), c.texts);
    EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {8}}}));
    EXPECT_EQ(bench.report.Take(), c.texts.empty() ? Failure("get function safety error, ret:-2") : Lines{});
  }
}

TEST(SmallSensor, ReadsAndSetsTheBaudRate) {
  Bench bench;
  bench.AnswerKtc({1, 2, 0x00, 0x2F, 0xAF, 0x08});
  EXPECT_EQ(bench.sensor.GetBaudRate(), "3125000");
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0xFF, {0, 1}, false}}));
  bench.AnswerKtc({0xFF, 0xFF, 0xFF, 0xFF});
  EXPECT_EQ(bench.sensor.GetBaudRate(), "4294967295");
  EXPECT_EQ(bench.report.Take(), Lines{});
  bench.AnswerKtc({1, 2, 3});
  EXPECT_EQ(bench.sensor.GetBaudRate(), "");
  EXPECT_EQ(bench.report.Take(), Failure("get baud rate error, ret:-2"));
  bench.AnswerKtc({}, 17);
  EXPECT_EQ(bench.sensor.GetBaudRate(), "");
  EXPECT_EQ(bench.report.Take(), Failure("get baud rate error, ret:17"));
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
  bench.AnswerKtc({}, -3);
  bench.sensor.SetBaudRate("9600");
  EXPECT_EQ(bench.report.Take(), Failure("set baud rate error, ret:-3"));
}

TEST(SmallSensor, ReadsAndSetsTheDestination) {
  Bench bench;
  Bytes reply(18);
  reply[12] = 192;
  reply[13] = 168;
  reply[15] = 7;
  reply[16] = 0x09;
  reply[17] = 0x40;
  bench.AnswerKtc(reply);
  EXPECT_EQ(bench.sensor.GetDestinationConfig(true), (Lines{"192.168.0.7", "2368"}));
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0x08, {}, true}}));
  reply.pop_back();
  bench.AnswerKtc(reply);
  EXPECT_EQ(bench.sensor.GetDestinationConfig(false), Lines{});
  EXPECT_EQ(bench.report.Take(), Failure("get destination config error, ret:-2"));
  EXPECT_FALSE(bench.SentKtc()[0].silent);

  EXPECT_TRUE(bench.sensor.SetDestinationIPandPort("10.0.0.255", 65535));
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0x20, {10, 0, 0, 255, 0xFF, 0xFF}, false}}));
  EXPECT_EQ(bench.report.Take(), Lines{"success: set destination IP and port successful"});
  struct Bad {
    const char* ip;
    int port;
  };
  for (const Bad& bad :
       {Bad{"10.0.0", 1}, Bad{"10.0.0.256", 1}, Bad{"10.0.0.1.", 1}, Bad{"10.0.0.1.2", 1}, Bad{"10..0.1", 1},
        Bad{"", 1}, Bad{"10.0.0.x", 1}, Bad{"10.0.0.1", -1}, Bad{"10.0.0.1", 65536}}) {
    EXPECT_FALSE(bench.sensor.SetDestinationIPandPort(bad.ip, bad.port)) << bad.ip;
    EXPECT_EQ(bench.report.Take(), Failure("set destination IP and port error, ret:-1")) << bad.ip;
    EXPECT_TRUE(bench.SentKtc().empty());
  }
}

TEST(SmallSensor, SetsTheImuRange) {
  struct Case {
    int angular;
    int accel;
    Bytes payload;
    std::string line;
  };
  const std::string kDone = "success: IMU range set successfully";
  for (const Case& c : {Case{0, 0, {11, 0, 0}, kDone}, Case{4, 2, {11, 4, 2}, kDone},
                        Case{5, 3, {11, 8, 3}, kDone}, Case{6, 9, {}, "error: Invalid angular range index"},
                        Case{-1, 0, {}, "error: Invalid angular range index"},
                        Case{0, 4, {}, "error: Invalid acceleration range index"},
                        Case{0, -1, {}, "error: Invalid acceleration range index"}}) {
    Bench bench;
    bench.Answer({11, 0, 0, 0});
    bench.sensor.SetImuRange(c.angular, c.accel);
    EXPECT_EQ(bench.report.Take(), Lines{c.line}) << c.angular;
    EXPECT_EQ(bench.Sent(),
              c.payload.empty() ? std::vector<Command>{} : (std::vector<Command>{{2, c.payload}}));
  }
  for (const Bytes& contents : {Bytes{11, 0, 0}, Bytes{11, 0, 0, 0, 0}, Bytes{10, 0, 0, 0}}) {
    Bench bench;
    bench.Answer(contents);
    bench.sensor.SetImuRange(0, 0);
    EXPECT_EQ(bench.report.Take(), Failure("set IMU range error, ret:-2"));
  }
}

// ---- What the sensor says of itself

struct InfoBench : Bench {
  explicit InfoBench(const std::string& model) { info.SetModel(model); }

  /// Versions by their index, a serial number, a destination.
  void AnswerAll(const Bytes& serial_number) {
    link.ktc->on_command = [serial_number](const Command& command, Bytes& contents) {
      contents = {command.payload[0], 0};
      if (command.payload[0] == 10) {
        contents.insert(contents.end(), serial_number.begin(), serial_number.end());
      } else {
        const std::string text = "1.2." + std::to_string(command.payload[1]);
        contents.insert(contents.end(), text.begin(), text.end());
        contents.resize(28);
      }
      return 0;
    };
    Bytes reply(18);
    reply[12] = 10;
    reply[17] = 80;
    AnswerKtc(reply);
  }

  void Round() { info.Round(std::stop_token()); }

  SmallSensorInfo info{report,
                       link,
                       {[this] { return upgrading; }, [this] { report.Add("changed"); },
                        [this] { report.Add(info.is_getting_pbl_version() ? "pbl begins" : "pbl ends"); }}};
};

Bytes Text(const std::string& text) {
  return {text.begin(), text.end()};
}

TEST(SmallSensorInfo, ShowsPlaceholdersThenWhatWasRead) {
  InfoBench bench("Zelto-KTC");
  EXPECT_EQ(bench.info.Info(),
            (std::vector<InfoRow>{
                {"Serial Number", "xxxxxxxx"}, {"Destination IP", "xx.xx.xx.xx"}, {"UDP Port", "xx"}}));
  EXPECT_EQ(bench.info.Versions(), (std::vector<InfoRow>{{"PBL Version", "xxxxxxxx"}}));
  bench.AnswerAll(Text(std::string("Z-0042\0\0", 8)));
  bench.Round();
  EXPECT_EQ(bench.report.Take(),
            (Lines{"changed", "changed", "changed", "pbl begins", "changed", "pbl ends"}));
  EXPECT_EQ(bench.info.Info(),
            (std::vector<InfoRow>{
                {"Serial Number", "Z-0042"}, {"Destination IP", "10.0.0.0"}, {"UDP Port", "80"}}));
  EXPECT_EQ(bench.info.Versions(), (std::vector<InfoRow>{{"PBL Version", "1.2.5"}}));
  const auto sent = bench.Sent();
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[0], (Command{2, {10, 1}}));
  Bytes version_request(27);
  version_request[0] = 15;
  version_request[1] = 5;
  EXPECT_EQ(sent[1], (Command{2, version_request}));
  for (const Ktc& request : bench.SentKtc()) EXPECT_TRUE(request.silent);

  bench.Round();  // nothing new: nothing is announced, and the PBL version is not asked for again
  EXPECT_EQ(bench.report.Take(), Lines{});
  EXPECT_EQ(bench.Sent().size(), 1U);
  bench.info.Reset();
  EXPECT_EQ(bench.info.Info()[0].value, "xxxxxxxx");
}

TEST(SmallSensorInfo, ReadsMarvoVersionsAndTheLinesOfZelto) {
  InfoBench marvo("Marvo-KTC");
  marvo.AnswerAll(Text("M1"));
  marvo.info.ReadMarvoVersions();
  marvo.Round();
  EXPECT_EQ(marvo.info.Versions(),
            (std::vector<InfoRow>{
                {"BMB FPGA Version", "1.2.0"}, {"TMB FPGA Version", "1.2.1"}, {"BMB MCU Version", "1.2.2"}}));
  EXPECT_EQ(marvo.Sent().size(), 4U);

  InfoBench lines("Zelto");
  lines.AnswerAll(Text("Z1"));
  lines.link.lines = std::exchange(lines.link.ktc, nullptr);
  lines.Round();
  EXPECT_TRUE(lines.SentKtc().empty());
  EXPECT_EQ(lines.info.Info(), (std::vector<InfoRow>{{"Serial Number", "Z1"}}));
  EXPECT_EQ(lines.info.Versions()[0].value, "1.2.5");
}

TEST(SmallSensorInfo, LogsAFailingQueryOnce) {
  InfoBench bench("Marvo-KTC");
  bench.Answer({}, -3);
  bench.AnswerKtc({}, -3);
  bench.info.ReadMarvoVersions();
  EXPECT_EQ(bench.report.Take(), (Lines{"ERROR Failed to get BMB FPGA version, ret:-3",
                                        "ERROR Failed to get TMB FPGA version, ret:-3",
                                        "ERROR Failed to get BMB MCU version, ret:-3"}));
  EXPECT_EQ(bench.info.Versions()[0].value, "xxxxxxxx");
  bench.Round();
  bench.Round();
  EXPECT_EQ(bench.report.Take(), Lines{"ERROR Zelto-KTC get SN failed, ret:-3"});
  for (const Bytes& serial : {Bytes{}, Bytes{0, 0}, Bytes{'A', 0x07}, Bytes{'A', 0x80}}) {
    bench.Answer({});
    bench.Round();  // another failure in between, so that each of these is news
    bench.report.Take();
    bench.AnswerAll(serial);
    bench.Round();
    EXPECT_TRUE(bench.report.Has("ERROR Zelto-KTC SN invalid after validation"));
    EXPECT_EQ(bench.info.Info()[0].value, "xxxxxxxx");
  }

  InfoBench pbl("Zelto");
  pbl.Answer({}, -2);
  pbl.Round();
  EXPECT_EQ(pbl.report.Take(), (Lines{"ERROR Zelto-KTC get SN failed, ret:-2", "pbl begins",
                                      "ERROR get pbl version error, ret:-2", "pbl ends"}));
}

TEST(SmallSensorInfo, RestsWhileAnUpgradeRuns) {
  InfoBench bench("Zelto-KTC");
  bench.upgrading = true;
  bench.Round();
  EXPECT_TRUE(bench.Sent().empty());
  bench.upgrading = false;
  bench.link.connected = false;
  bench.Round();
  EXPECT_TRUE(bench.Sent().empty());
}

}  // namespace
}  // namespace varkel
