#include "VarkelCore/src/small_sensor/small_sensor.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "tests/core/small_sensor_fixture.h"

namespace varkel {
namespace {

using test::Bytes;
using Command = test::ScriptedExchange::Command;
using Ktc = test::ScriptedChannel::KtcRequest;
using Lines = std::vector<std::string>;

struct SmallSensorFixture {
  /// Answers commands with these contents (from the reply's byte 2 on), and KTC with the same.
  void Answer(const Bytes& contents, int result = 0) {
    channel->ktc->on_command = [contents, result](const Command&, Bytes& out) {
      out = contents;
      return result;
    };
    channel->on_ktc = [contents, result](const Ktc&, Bytes& out) {
      out = contents;
      return result;
    };
  }
  std::vector<Command> Sent() { return std::exchange(channel->ktc->commands, {}); }
  std::vector<Ktc> SentKtc() { return std::exchange(channel->ktc_requests, {}); }
  /// The code and payload of each request.
  std::vector<Bytes> Requests() {
    std::vector<Bytes> all;
    for (const Command& request : Sent()) all.push_back(Joined(request.code, request.payload));
    for (const Ktc& request : SentKtc()) all.push_back(Joined(request.command, request.payload));
    return all;
  }
  static Bytes Joined(std::uint8_t code, Bytes payload) {
    payload.insert(payload.begin(), code);
    return payload;
  }

  test::RecordedReport report;
  std::shared_ptr<test::ScriptedChannel> channel = std::make_shared<test::ScriptedChannel>();
  bool connected = true;
  Activity activity{{[] {}, [] {}}};
  std::atomic<int> connect_type = kKtcToSmallSensor;
  SmallSensor sensor{report, activity, [this] { return connected ? channel : nullptr; }, connect_type};
};

// The functions, with their results as text.

using Function = std::function<Lines(SmallSensor&)>;
constexpr char kCorrection[] = "correction-\xC3\xA4.bin";

Function Standby(int value) {
  return [=](auto& sensor) { return sensor.SetStandby(value), Lines{}; };
}
Function SpinRate(int value) {
  return [=](auto& sensor) { return sensor.SetSpinRate(value), Lines{}; };
}
Function ImuRange(int angular, int accel) {
  return [=](auto& sensor) { return sensor.SetImuRange(angular, accel), Lines{}; };
}
/// The code, and the file's content if there is a file.
Function Correction(const std::string& path = kCorrection) {
  return [=](auto& sensor) {
    const auto saved = sensor.GetCorrection(path);
    Lines result = {std::to_string(saved ? 0 : saved.error().code)};
    using Text = std::istreambuf_iterator<char>;
    if (std::ifstream file(path, std::ios::binary); file) result.emplace_back(Text(file), Text());
    std::remove(path.c_str());
    return result;
  };
}
Lines Safety(SmallSensor& sensor) {
  return sensor.GetLidarFunctionSafety().value_or(Lines());
}
Lines BaudRate(SmallSensor& sensor) {
  return {sensor.GetBaudRate().value_or("")};
}
Function SetBaudRate(const std::string& text) {
  return [=](auto& sensor) { return sensor.SetBaudRate(text), Lines{}; };
}
Lines Destination(SmallSensor& sensor) {
  return sensor.GetDestinationConfig(false).value_or(Lines());
}
Function SetDestination(const std::string& ip, int port) {
  return [=](auto& sensor) { return Lines{sensor.SetDestinationIPandPort(ip, port) ? "done" : "failed"}; };
}

/// A notice and a log line.
Lines Error(const std::string& text) {
  return {"error: " + text, "ERROR " + text};
}
Lines Error(const std::string& what, int code) {
  return Error(what + " error, ret:" + std::to_string(code));
}

TEST(SmallSensor, SendsReadsAndReports) {
  const Lines silence;
  const Lines file_wrong = Error("get calibration", -2);
  const Lines safety_wrong = Error("get function safety", -2);
  const Lines angular_wrong = {"error: Invalid angular range index"};
  const Lines accel_wrong = {"error: Invalid acceleration range index"};
  const Bytes here = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 192, 168, 0, 7, 0x09, 0x40};
  const struct {
    Function call;
    Bytes reply;  ///< a serial one from its byte 2 on
    Bytes sent;
    Lines reported;
    Lines result{};
  } cases[] = {
      {Standby(0), {0, 0, 0}, {3, 0, 0}, silence},
      {SpinRate(1), {10, 0, 0, 0}, {3, 10, 1}, Error("set lidar spin rate", -2)},
      {Correction(), {7, 0, 3, 0xDE, 0x00, 0x0A, 9}, {2, 7}, silence, {"0", std::string("\xDE\0\n", 3)}},
      {Correction(), {7, 0, 2, 1, 2, 3, 4}, {2, 7}, file_wrong, {"-2"}},
      {Correction("no/such/folder/file.bin"),
       {7, 0, 0, 9},
       {2, 7},
       Error("create calibration file fail, save correction file error"),
       {"-1"}},
      {Safety, {8, 0xA1, 0}, {2, 8}, silence, {"Normal"}},
      {Safety, {8, 0xA1, 2, 0x34, 0x12, 0xFF, 0xFF, 9}, {2, 8}, silence, {"Shutdown", "0x1234", "0xFFFF"}},
      {Safety, {8, 0xA1, 3}, {2, 8}, silence, {"3"}},
      {Safety, {8, 0xA2, 0}, {2, 8}, safety_wrong},
      {ImuRange(0, 0), {11, 0, 0, 0, 0}, {2, 11, 0, 0}, Error("set IMU range", -2)},
      {ImuRange(6, 9), {}, {}, angular_wrong},
      {ImuRange(0, -1), {}, {}, accel_wrong},
      {BaudRate, {1, 2, 0xF0, 0x2F, 0xAF, 0x08}, {0xFF, 0, 1}, silence, {"4029656840"}},
      {Destination, here, {8}, silence, {"192.168.0.7", "2368"}},
      {Destination, Bytes(here.begin(), here.end() - 1), {8}, Error("get destination config", -2)},
  };
  for (const auto& [call, reply, sent, reported, result] : cases) {
    SCOPED_TRACE(testing::PrintToString(sent) + " " + testing::PrintToString(reply));
    SmallSensorFixture fixture;
    fixture.Answer(reply);
    EXPECT_EQ(call(fixture.sensor), result);
    EXPECT_EQ(fixture.Requests(), sent.empty() ? std::vector<Bytes>{} : std::vector<Bytes>{sent});
    EXPECT_EQ(fixture.report.Take(), reported);
    // A reply cut off anywhere says less or is reported; the sanitizer checks that no byte after it is read.
    for (std::size_t size = 0; size < reply.size(); ++size) {
      fixture.Answer(Bytes(reply.begin(), reply.begin() + static_cast<std::ptrdiff_t>(size)));
      EXPECT_TRUE(call(fixture.sensor) != result || !fixture.report.Take().empty() || result.empty()) << size;
    }
  }
}

TEST(SmallSensor, RejectsInvalidRatesAndDestinations) {
  SmallSensorFixture fixture;
  for (const char* text : {"abc", "0", "", " ", "-1", "96o0", "9600 8", "4294967296", "0x10"}) {
    fixture.sensor.SetBaudRate(text);
    EXPECT_EQ(fixture.report.Take(), Lines{"error: invalid baud rate value"}) << text;
  }
  const std::pair<const char*, int> places[] = {
      {"10.0.0", 1}, {"10.0.0.256", 1}, {"10.0.0.1.", 1}, {"10..0.1", 1},
      {"", 1},       {"10.0.0.x", 1},   {"10.0.0.1", -1}, {"10.0.0.1", 65536}};
  for (const auto& [ip, port] : places) {
    EXPECT_FALSE(fixture.sensor.SetDestinationIPandPort(ip, port)) << ip;
    EXPECT_EQ(fixture.report.Take(), Error("set destination IP and port", -1)) << ip;
  }
  EXPECT_TRUE(fixture.SentKtc().empty());
}

TEST(SmallSensor, StoresTheModeOnceTheSensorAcceptedIt) {
  SmallSensorFixture fixture;
  fixture.channel->ktc->set_current_mode(99);
  for (const auto& [status, mode] : {std::pair{4, 99}, {0, 11}}) {
    fixture.Answer({11, 0, static_cast<std::uint8_t>(status)});
    fixture.sensor.SetStandby(1);
    EXPECT_EQ(fixture.channel->ktc->current_mode(), mode);
  }
}

TEST(SmallSensor, RefusesWithTheFunctionsOwnMessage) {
  const std::string upgrade = "error: lidar is not connected, or lidar is upgrade";
  const std::string upgrading = upgrade.substr(0, upgrade.size() - 1) + "ing";
  const struct {
    Function call;
    std::string not_ready;
    std::string only{};  ///< the refusal outside KTC; empty if the connection switches to KTC instead
  } cases[] = {{Standby(1), upgrade},
               {SpinRate(1), upgrade},
               {Correction(), upgrade},
               {Safety, upgrade},
               {ImuRange(0, 0), upgrade, "Marvo IMU range setting is only supported in KTC_SERIAL mode"},
               {BaudRate, upgrading, "GetBaudRate is only supported in KTC serial mode"},
               {SetBaudRate("9600"), upgrading, "SetBaudRate is only supported in KTC serial mode"},
               {Destination, upgrading, "GetDestinationConfig is only supported in KTC serial mode"},
               {SetDestination("1.2.3.4", 5), upgrading,
                "SetDestinationIPandPort is only supported in KTC serial mode"}};
  for (const auto& [call, not_ready, only] : cases) {
    for (int obstacle = 0; obstacle < 5; ++obstacle) {
      SmallSensorFixture fixture;
      fixture.connected = obstacle == 1 || obstacle == 2;
      if (obstacle == 1) fixture.activity.BeginUpgrade();
      if (obstacle == 2) fixture.channel->ktc = nullptr;
      const bool other_type = obstacle >= 3;
      if (other_type) fixture.connect_type = obstacle == 3 ? kNetwork : kSerialLines;
      const int type = fixture.connect_type;
      const Lines result = call(fixture.sensor);
      EXPECT_TRUE(result.empty() || result == Lines{"-1"} || result == Lines{""} ||
                  result == Lines{"failed"});
      EXPECT_EQ(fixture.report.Take(), Lines{other_type && !only.empty() ? "error: " + only : not_ready});
      EXPECT_EQ(fixture.connect_type, only.empty() ? kKtcToSmallSensor : type);
      EXPECT_TRUE(fixture.SentKtc().empty());
    }
  }
}

// ---- The sensor's information

struct InfoFixture : SmallSensorFixture {
  explicit InfoFixture(const std::string& model) { info.SetModel(model); }

  /// Versions by their index, a serial number, a destination.
  void AnswerAll(const std::string& serial_number) {
    channel->ktc->on_command = [serial_number](const Command& command, Bytes& contents) {
      const bool version = command.payload[0] == 15;
      const std::string text = version ? "1.2." + std::to_string(command.payload[1]) : serial_number;
      contents = {command.payload[0], 0};
      contents.insert(contents.end(), text.begin(), text.end());
      if (version) contents.resize(28);
      return 0;
    };
    channel->on_ktc = [](const Ktc&, Bytes& reply) {
      reply = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 80};
      return 0;
    };
  }
  /// What a round reports.
  Lines Round() {
    info.Round(*channel, stop.get_token());
    return report.Take();
  }

  std::stop_source stop;
  SmallSensorInfo info{report,
                       activity,
                       {[this] { report.Add("changed"); },
                        [this] { report.Add(info.is_getting_pbl_version() ? "pbl begins" : "pbl ends"); }}};
};

TEST(SmallSensorInfo, ShowsPlaceholdersThenWhatWasRead) {
  InfoFixture fixture("Zelto-KTC");
  using Rows = std::vector<InfoRow>;
  EXPECT_EQ(fixture.info.Info(),
            (Rows{{"Serial Number", "xxxxxxxx"}, {"Destination IP", "xx.xx.xx.xx"}, {"UDP Port", "xx"}}));
  EXPECT_EQ(fixture.info.Versions(), (Rows{{"PBL Version", "xxxxxxxx"}}));
  fixture.AnswerAll(std::string("Z-0042\0\0", 8));
  EXPECT_EQ(fixture.Round(), (Lines{"changed", "changed", "changed", "pbl begins", "changed", "pbl ends"}));
  EXPECT_EQ(fixture.info.Info(),
            (Rows{{"Serial Number", "Z-0042"}, {"Destination IP", "10.0.0.0"}, {"UDP Port", "80"}}));
  EXPECT_EQ(fixture.info.Versions(), (Rows{{"PBL Version", "1.2.5"}}));
  for (const Ktc& request : fixture.SentKtc()) EXPECT_TRUE(request.silent);
  fixture.Sent();
  EXPECT_EQ(fixture.Round(), Lines{});  // nothing new, and the PBL version is not asked for again
  EXPECT_EQ(fixture.Sent().size(), 1U);
  fixture.info.Reset();
  EXPECT_EQ(fixture.info.Info()[0].value, "xxxxxxxx");
  fixture.activity.BeginUpgrade();
  fixture.Round();
  EXPECT_TRUE(fixture.Sent().empty());
}

TEST(SmallSensorInfo, ReportsAFailureOnceAndRetriesVersions) {
  InfoFixture fixture("Zelto");
  fixture.Answer({}, -2);
  EXPECT_EQ(fixture.Round(), (Lines{"ERROR Zelto-KTC get SN failed, ret:-2", "pbl begins",
                                    "ERROR get pbl version error, ret:-2", "pbl ends"}));
  for (int round = 1; round < 5; ++round) {
    for (const std::string& line : fixture.Round()) EXPECT_FALSE(line.starts_with("ERROR")) << line;
  }
  EXPECT_EQ(fixture.Sent().size(), 5U + SmallSensorInfo::kVersionTries)
      << "no more attempts than this for a sensor that does not answer";
  InfoFixture again("Zelto");
  again.Answer({}, -2);
  again.Round();
  again.AnswerAll("Z1");
  EXPECT_EQ(again.Round(), (Lines{"changed", "pbl begins", "changed", "pbl ends"}));
  for (const std::string& serial :
       {std::string(), std::string(2, '\0'), std::string("A\a"), std::string("A\x80")}) {
    again.Answer({}, -3);
    again.Round();  // another failure in between, so that each of these is reported
    again.AnswerAll(serial);
    EXPECT_EQ(again.Round(), Lines{"ERROR Zelto-KTC SN invalid after validation"});
    EXPECT_EQ(again.info.Info()[0].value, "Z1");
  }
}

}  // namespace
}  // namespace varkel
