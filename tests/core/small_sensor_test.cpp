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
    std::string what;
  };
  const std::vector<Case> cases = {
      {[](SmallSensor& s) { s.SetStandby(0); }, {0, 0}, "mode"},
      {[](SmallSensor& s) { s.SetStandby(-1); }, {11, 0}, "mode"},
      {[](SmallSensor& s) { s.SetStandby(5); }, {11, 0}, "mode"},
      {[](SmallSensor& s) { s.SetSpinRate(300); }, {10, 44}, "spin rate"},
      {[](SmallSensor& s) { s.SetReturnMode(0); }, {8, 0}, "return mode"},
      {[](SmallSensor& s) { s.SetReturnMode(1); }, {9, 0}, "return mode"},
  };
  for (const Case& c : cases) {
    struct Reply {
      Bytes contents;
      int code;  ///< told to the user; 0: nothing is
      int result = 0;
    };
    const std::uint8_t item = c.payload[0];
    for (const Reply& reply :
         {Reply{{item, 0, 0}, 0}, Reply{{item, 0, 200}, 200}, Reply{{item, 0, 0, 0}, -2},
          Reply{{item, 0}, -2}, Reply{{}, -2}, Reply{{7, 0, 0}, -2}, Reply{{item, 0, 0}, -3, -3}}) {
      Bench bench;
      bench.connect_type = kNetwork;
      bench.link.ktc->set_current_mode(99);
      bench.Answer(reply.contents, reply.result);
      c.call(bench.sensor);
      EXPECT_EQ(bench.Sent(), (std::vector<Command>{{3, c.payload}}));
      const std::string text = "set lidar " + c.what + " error, ret:" + std::to_string(reply.code);
      EXPECT_EQ(bench.report.Take(), reply.code == 0 ? Lines{} : Failure(text));
      EXPECT_EQ(bench.connect_type, kKtcToSmallSensor);
      EXPECT_EQ(bench.link.ktc->current_mode(), c.what == "mode" && reply.code == 0 ? item : 99);
    }
  }
}

TEST(SmallSensor, RefusesWithTheWordsOfTheFunction) {
  struct Case {
    std::function<void(SmallSensor&)> call;
    const char* not_ktc;  ///< empty: becomes KTC instead
    const char* not_ready = "error: lidar is not connected, or lidar is upgrading";
  };
  const char* const kUpgrade = "error: lidar is not connected, or lidar is upgrade";
  const std::vector<Case> cases = {
      {[](SmallSensor& s) { s.SetStandby(1); }, "", kUpgrade},
      {[](SmallSensor& s) { s.SetSpinRate(1); }, "", kUpgrade},
      {[](SmallSensor& s) { s.SetReturnMode(1); }, "", kUpgrade},
      {[](SmallSensor& s) { EXPECT_EQ(s.GetCorrection("/nowhere"), -1); }, "", kUpgrade},
      {[](SmallSensor& s) { EXPECT_TRUE(s.GetLidarFunctionSafety().empty()); }, "", kUpgrade},
      {[](SmallSensor& s) { s.SetImuRange(0, 0); },
       "error: Marvo IMU range setting is only supported in KTC_SERIAL mode", kUpgrade},
      {[](SmallSensor& s) { EXPECT_EQ(s.GetBaudRate(), ""); },
       "error: GetBaudRate is only supported in KTC serial mode"},
      {[](SmallSensor& s) { s.SetBaudRate("9600"); },
       "error: SetBaudRate is only supported in KTC serial mode"},
      {[](SmallSensor& s) { EXPECT_TRUE(s.GetDestinationConfig(false).empty()); },
       "error: GetDestinationConfig is only supported in KTC serial mode"},
      {[](SmallSensor& s) { EXPECT_FALSE(s.SetDestinationIPandPort("1.2.3.4", 5)); },
       "error: SetDestinationIPandPort is only supported in KTC serial mode"},
  };
  for (const Case& c : cases) {
    for (int obstacle = 0; obstacle < 3; ++obstacle) {
      Bench bench;
      bench.link.connected = obstacle != 0;
      bench.upgrading = obstacle == 1;
      if (obstacle == 2) bench.link.ktc = nullptr;
      c.call(bench.sensor);
      EXPECT_EQ(bench.report.Take(), Lines{c.not_ready});
      EXPECT_TRUE(bench.SentKtc().empty());
    }
    for (const int type : {kNetwork, kSerialLines}) {
      Bench bench;
      bench.connect_type = type;
      bench.link.connected = false;
      c.call(bench.sensor);
      EXPECT_EQ(bench.report.Take(), Lines{*c.not_ktc == 0 ? c.not_ready : c.not_ktc});
      EXPECT_EQ(bench.connect_type, *c.not_ktc == 0 ? kKtcToSmallSensor : type);
    }
  }
}

TEST(SmallSensor, SavesTheCorrectionFile) {
  const std::string path = "correction-\xC3\xA4.bin";
  struct Case {
    Bytes reply;  ///< from byte 2 on
    Bytes file;
    int result = -2;
  };
  Bench bench;
  for (const Case& c :
       {Case{{7, 0, 3, 0xDE, 0x00, 0x0A, 9}, {0xDE, 0x00, 0x0A}, 0}, Case{{7, 0, 0, 9}, {}, 0},
        Case{{7, 0, 2, 1, 2, 3, 4}, {}}, Case{{7, 0, 4, 1, 2, 3, 4}, {}}, Case{{7, 0, 255, 1}, {}},
        Case{{7, 0, 0}, {}}, Case{{8, 0, 1, 1, 2}, {}}}) {
    bench.Answer(c.reply);
    EXPECT_EQ(bench.sensor.GetCorrection(path), c.result);
    EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {7}}}));
    EXPECT_EQ(bench.report.Take(), c.result == 0 ? Lines{} : Failure("get calibration error, ret:-2"));
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(file.is_open(), c.result == 0);
    EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(file), {}), c.file);
    std::remove(path.c_str());
  }
  bench.Answer({7, 0, 0, 9});
  EXPECT_EQ(bench.sensor.GetCorrection("no/such/folder/file.bin"), -1);
  EXPECT_EQ(bench.report.Take(), Failure("create calibration file fail, save correction file error"));
}

TEST(SmallSensor, ReadsFunctionSafety) {
  const auto safety = [](const Bytes& reply) {
    Bench bench;
    bench.Answer(reply);
    const Lines texts = bench.sensor.GetLidarFunctionSafety();
    EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {8}}}));
    EXPECT_EQ(bench.report.Take(), texts.empty() ? Failure("get function safety error, ret:-2") : Lines{});
    return texts;
  };
  EXPECT_EQ(safety({8, 0xA1, 0}), Lines{"Normal"});
  EXPECT_EQ(safety({8, 0xA1, 1, 0x0A, 0x00}), (Lines{"Warning", "0x000A"}));
  EXPECT_EQ(safety({8, 0xA1, 2, 0x34, 0x12, 0xFF, 0xFF, 9}), (Lines{"Shutdown", "0x1234", "0xFFFF"}));
  EXPECT_EQ(safety({8, 0xA1, 3}), Lines{"3"});
  for (const Bytes& reply : {Bytes{8, 0xA2, 0}, Bytes{8, 0xA1}, Bytes{7, 0xA1, 0}}) {
    EXPECT_EQ(safety(reply), Lines{});
  }
}

TEST(SmallSensor, ReadsAndSetsTheBaudRate) {
  Bench bench;
  bench.AnswerKtc({1, 2, 0xF0, 0x2F, 0xAF, 0x08});
  EXPECT_EQ(bench.sensor.GetBaudRate(), "4029656840");
  EXPECT_EQ(bench.SentKtc(), (std::vector<Ktc>{{0xFF, {0, 1}, false}}));
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
  Bytes reply = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 192, 168, 0, 7, 0x09, 0x40};
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
  using Place = std::pair<const char*, int>;
  for (const auto& [ip, port] :
       {Place{"10.0.0", 1}, Place{"10.0.0.256", 1}, Place{"10.0.0.1.", 1}, Place{"10..0.1", 1}, Place{"", 1},
        Place{"10.0.0.x", 1}, Place{"10.0.0.1", -1}, Place{"10.0.0.1", 65536}}) {
    EXPECT_FALSE(bench.sensor.SetDestinationIPandPort(ip, port)) << ip;
    EXPECT_EQ(bench.report.Take(), Failure("set destination IP and port error, ret:-1")) << ip;
    EXPECT_TRUE(bench.SentKtc().empty());
  }
}

TEST(SmallSensor, SetsTheImuRange) {
  const auto told = [](int angular, int accel, const Bytes& sent, const Bytes& reply = {11, 0, 0, 0}) {
    Bench bench;
    bench.Answer(reply);
    bench.sensor.SetImuRange(angular, accel);
    EXPECT_EQ(bench.Sent(), sent.empty() ? std::vector<Command>{} : (std::vector<Command>{{2, sent}}));
    return bench.report.Take();
  };
  const Lines kDone = {"success: IMU range set successfully"};
  EXPECT_EQ(told(0, 0, {11, 0, 0}), kDone);
  EXPECT_EQ(told(4, 2, {11, 4, 2}), kDone);
  EXPECT_EQ(told(5, 3, {11, 8, 3}), kDone);
  EXPECT_EQ(told(6, 9, {}), Lines{"error: Invalid angular range index"});
  EXPECT_EQ(told(-1, 0, {}), Lines{"error: Invalid angular range index"});
  EXPECT_EQ(told(0, 4, {}), Lines{"error: Invalid acceleration range index"});
  EXPECT_EQ(told(0, -1, {}), Lines{"error: Invalid acceleration range index"});
  for (const Bytes& reply : {Bytes{11, 0, 0}, Bytes{11, 0, 0, 0, 0}, Bytes{10, 0, 0, 0}}) {
    EXPECT_EQ(told(0, 0, {11, 0, 0}, reply), Failure("set IMU range error, ret:-2"));
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

  void Round() { info.Round(std::stop_token()); }

  SmallSensorInfo info{report,
                       link,
                       {[this] { return upgrading; }, [this] { report.Add("changed"); },
                        [this] { report.Add(info.is_getting_pbl_version() ? "pbl begins" : "pbl ends"); }}};
};

TEST(SmallSensorInfo, ShowsPlaceholdersThenWhatWasRead) {
  InfoBench bench("Zelto-KTC");
  const auto info = [](const char* serial_number, const char* ip, const char* port) {
    return std::vector<InfoRow>{{"Serial Number", serial_number}, {"Destination IP", ip}, {"UDP Port", port}};
  };
  EXPECT_EQ(bench.info.Info(), info("xxxxxxxx", "xx.xx.xx.xx", "xx"));
  EXPECT_EQ(bench.info.Versions(), (std::vector<InfoRow>{{"PBL Version", "xxxxxxxx"}}));
  bench.AnswerAll(std::string("Z-0042\0\0", 8));
  bench.Round();
  EXPECT_EQ(bench.report.Take(),
            (Lines{"changed", "changed", "changed", "pbl begins", "changed", "pbl ends"}));
  EXPECT_EQ(bench.info.Info(), info("Z-0042", "10.0.0.0", "80"));
  EXPECT_EQ(bench.info.Versions(), (std::vector<InfoRow>{{"PBL Version", "1.2.5"}}));
  Bytes version_request(27);
  version_request[0] = 15;
  version_request[1] = 5;
  EXPECT_EQ(bench.Sent(), (std::vector<Command>{{2, {10, 1}}, {2, version_request}}));
  for (const Ktc& request : bench.SentKtc()) EXPECT_TRUE(request.silent);

  bench.Round();  // nothing new: nothing is announced, and the PBL version is not asked for again
  EXPECT_EQ(bench.report.Take(), Lines{});
  EXPECT_EQ(bench.Sent().size(), 1U);
  bench.info.Reset();
  EXPECT_EQ(bench.info.Info()[0].value, "xxxxxxxx");
  bench.upgrading = true;
  bench.Round();
  bench.upgrading = false;
  bench.link.connected = false;
  bench.Round();
  EXPECT_TRUE(bench.Sent().empty());
}

TEST(SmallSensorInfo, ReadsMarvoVersionsAndTheLinesOfZelto) {
  InfoBench marvo("Marvo-KTC");
  marvo.AnswerAll("M1");
  marvo.info.ReadMarvoVersions();
  marvo.Round();
  EXPECT_EQ(marvo.info.Versions(),
            (std::vector<InfoRow>{
                {"BMB FPGA Version", "1.2.0"}, {"TMB FPGA Version", "1.2.1"}, {"BMB MCU Version", "1.2.2"}}));
  EXPECT_EQ(marvo.Sent().size(), 4U);

  InfoBench lines("Zelto");
  lines.AnswerAll("Z1");
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
  for (const std::string& serial :
       {std::string(), std::string(2, '\0'), std::string("A\a"), std::string("A\x80")}) {
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

}  // namespace
}  // namespace varkel
