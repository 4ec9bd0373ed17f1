#include "VarkelCore/src/documents/dissector.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/values/value_text.h"
#include "libquarn/Source/src/serial_frame.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/documents/tshark.h"
#include "tests/quarn/fake_peer.h"
#include "tests/support/protocol_page.h"

namespace varkel {
namespace {

using quarn::test::FromHex;
using test::Bytes;
using test::KtcFrame;
using test::Wireshark;
using testing::HasSubstr;
using testing::Not;

/// Ports for the streams that belong to no well-known service.
constexpr std::uint16_t kFirstClient = 50000;

/// Exchanges with a simulated sensor that are written to the capture unchanged.
class Recorder {
 public:
  Recorder(const std::string& model, std::uint8_t version, test::CaptureFile& capture)
      : sensor_({.table_path = "./Config/varID/" + model + ".csv"}), version_(version), capture_(capture) {
    sensor_.Start();
    client_ = quarn::test::MakeClient(sensor_.port(), version);
    EXPECT_TRUE(quarn::test::Eventually([&] { return client_->IsOpen(); }));
  }

  /// Returns the payload of the reply.
  Bytes Exchange(std::uint8_t command, const Bytes& payload) {
    Bytes reply;
    EXPECT_EQ(client_->QueryCommand(payload, reply, command, true), 0);
    capture_.ToSensor(KtcFrame(version_, command, payload));
    capture_.FromSensor(reply);
    const std::size_t header = std::min<std::size_t>(reply.size(), version_ == 1 ? 8 : 12);
    return Bytes(reply.begin() + static_cast<std::ptrdiff_t>(header), reply.end());
  }

 private:
  sim::SimulatedSensor sensor_;
  const std::uint8_t version_;
  test::CaptureFile& capture_;
  std::shared_ptr<quarn::lidar::KtcClient> client_;
};

/// The line for a variable, with the text that the tool shows for these bytes.
std::string ShownLine(const VarInfo& var, std::span<const std::uint8_t> field) {
  std::string text = BytesToText(var.var_type, field, var.coefficient).text;
  for (const auto& [value, label] : var.option_labels) {
    if (std::to_string(value) == text) text.insert(0, label + " (").append(")");
  }
  return var.var_name + var.unit + ": " + text;
}

TEST(Dissector, ShowsWhatTheToolShows) {
  ConfigParser table("./Config/varID/Quenta.csv");
  ASSERT_TRUE(table.ExtractConfigInfo());
  for (const std::uint8_t version : {std::uint8_t{1}, std::uint8_t{2}}) {
    Wireshark wireshark({"Quenta"});
    Recorder recorder("Quenta", version, wireshark.capture());
    std::vector<std::string> expected;
    for (const auto& [text, vars] : table.get_cmd_map()) {
      if (vars.front()->var_type == "raw") continue;
      const Command command = ParseCommandText(text);
      const Bytes reply =
          recorder.Exchange(command.code, RequestPayload(command, vars.front()->get_cmd_payload_bytes));
      for (const VarInfo* var : vars) {
        ASSERT_LE(var->get_start_pos + var->var_len, reply.size()) << var->var_name;
        expected.push_back(ShownLine(*var, std::span(reply).subspan(var->get_start_pos, var->var_len)));
      }
    }
    std::set<std::string> shown;
    std::istringstream lines(wireshark.Run("-V"));
    for (std::string line; std::getline(lines, line);) {
      shown.insert(line.substr(std::min(line.find_first_not_of(' '), line.size())));
    }
    EXPECT_GT(expected.size(), 90U);
    for (const std::string& line : expected) EXPECT_TRUE(shown.contains(line)) << line;
    EXPECT_EQ(wireshark.Run("-Y _ws.expert"), wireshark.Run("-Y frame.number==0"));
  }
}

TEST(Dissector, ShowsASave) {
  Wireshark wireshark({"Quenta"});
  Recorder recorder("Quenta", 1, wireshark.capture());
  recorder.Exchange(0x41, FromHex("00 04 b0 00 02 01 01"));
  recorder.Exchange(
      0x43,
      FromHex("0c fe 3f 00 00 00 43 48 00 00 c0 0c 00 00 00 00 00 00 00 fb ff ef 42 8c 00 00 ff ff ff 06"));
  recorder.Exchange(0xFF, FromHex("01 00 01 02 02 5f 28 01 01 f4 00 00 00 00 00 00 07 d0"));
  const std::string shown = wireshark.Run("-V");
  for (const char* line : {"Spin Rate: 1200 rpm (20 Hz) (1200)", "Detection Threshold (mV): 125.50",
                           "Reflectivity Offset (%): -4.25", "Temperature Compensation (ppm): -250",
                           "Pulse Energy Limit (nJ): 35.00", "Four-byte command: 0x01000102",
                           "Safety Mode: Shut down (2)", "Watchdog Time-Out (ms): 2000"}) {
    EXPECT_THAT(shown, HasSubstr(line));
  }
  for (const char* filter : {"ktc.quenta.spin_rate > 600", "ktc.quenta.detection_threshold == 125.5",
                             "ktc.quenta.safety_mode == 2 && ktc.extended_command == 0x01000102"}) {
    EXPECT_THAT(wireshark.Run("-Y '" + std::string(filter) + "'"), HasSubstr("Request")) << filter;
  }
  EXPECT_THAT(wireshark.Run("-Y 'ktc.quenta.spin_rate > 1200'"), Not(HasSubstr("Request")));
  EXPECT_THAT(wireshark.Run("-2 -Y 'ktc.response_time' -T fields -e ktc.response_to -e ktc.response_time"),
              HasSubstr("1\t0.001000000\n3\t0.001000000\n5\t0.001000000\n"));
}

TEST(Dissector, ExplainsFramesAndFaults) {
  const struct {
    const char *name, *to_sensor, *from_sensor, *shown;
  } kCases[] = {
      {"refused", "47 74 05 00 00 00 00 00", "47 74 05 09 00 00 00 00",
       "Reply 0x05 Motor State and 4 more, refused with 9"},
      {"short", "47 74 05 00 00 00 00 00", "47 74 05 00 00 00 00 04 02 02 58 01",
       "shorter than its variables"},
      {"long", "47 74 42 00 00 00 00 00", "47 74 44 00 00 00 00 04 01 00 5a 77",
       "Beyond the variables: Payload: 77"},
      {"stray", "47 74 05 00 00 00 00 00", "47 74 07 00 00 00 00 00", "Unsolicited reply"},
      {"unknown", "47 74 ee 00 00 00 00 03 61 62 63", "", "has no such command"},
      {"unknown bytes", "47 74 ee 00 00 00 00 03 61 62 63", "", "Payload: 616263"},
      {"noise", "01 02 47 74 05 00 00 00 00 00", "", "Bytes outside of frames: 0102"},
      {"after noise", "01 02 47 74 05 00 00 00 00 00", "", "Request 0x05"},
      {"huge", "", "47 74 05 00 ff ff ff ff 02", "More payload is announced"},
      {"angles", "47 74 22 00 00 00 00 0b 03 00 00 01 31 04 b0 0e 0f 0e 10", "", "Start angle (deg): 30.5"},
      {"pairs", "", "47 74 23 00 00 00 00 09 02 00 00 01 31 04 b0 0e 10", "End angle (deg): 30.5"},
      {"asked rate", "47 74 ff 00 00 00 00 02 00 01", "47 74 ff 00 00 00 00 06 00 01 00 01 c2 00",
       "Baud rate: 115200"},
      {"rate", "47 74 ff 00 00 00 00 07 00 01 39 00 01 c2 00", "", "Baud rate: 115200"},
      {"piece",
       "47 74 60 00 00 00 00 21 47 74 60 00 00 00 00 19 00 00 00 00 00 00 00 01 00 00 00 01 03 76 e6 e7 31 "
       "32 33 "
       "34 35 36 37 38 39",
       "", "Firmware Upgrade, piece 1 of 1"},
      {"wrong piece",
       "47 74 60 00 00 00 00 21 47 74 60 00 00 00 00 19 00 00 00 00 00 00 00 01 00 00 00 01 03 76 e6 e7 31 "
       "32 33 34 35 36 37 38 38",
       "", "The CRC of the piece is wrong"},
      {"trailer", "", "24 4c 44 43 4d 44 2c 03 03 0b 00 00 44 33 22 11 89 05 2b 79 ee fe",
       "EE FF is missing"},
      {"serial CRC", "", "24 4c 44 43 4d 44 2c 03 03 0b 01 00 44 33 22 11 89 05 2b 79 ee ff",
       "The CRC is wrong"},
      {"status", "", "24 4c 44 4f 54 41 2c 01 01 05 00 00 00 01 d8 63 f6 c6 ee ff",
       "The small sensor refused"},
      {"serial text", "", "24 4c 44 43 4d 44 2c 08 02 0a 01 5a 31 32 33 34 00 07 00 00 00 8e 65 8e f8 ee ff",
       "Text: Z1234"},
      {"serial in KTC",
       "47 74 ff 00 00 00 00 15 00 02 24 4c 44 43 4d 44 2c 01 02 01 02 03 04 a1 75 2c 42 ee ff", "",
       "Nonce: 0x04030201"},
  };
  Wireshark wireshark({"Quenta"});
  std::uint16_t client = kFirstClient;
  for (const auto& c : kCases) {
    ++client;
    if (*c.to_sensor != '\0') wireshark.capture().ToSensor(FromHex(c.to_sensor), client);
    if (*c.from_sensor != '\0') wireshark.capture().FromSensor(FromHex(c.from_sensor), client);
  }
  // One capture for all cases, because tshark takes longer to start than to read.
  const std::string all = wireshark.Run("-V");
  client = kFirstClient;
  for (const auto& c : kCases) {
    const std::string port = ": " + std::to_string(++client) + ",";
    std::string shown;
    for (std::size_t at = all.find("\nFrame "); at != std::string::npos;) {
      const std::size_t next = all.find("\nFrame ", at + 1);
      const std::string packet = all.substr(at, next - at);
      if (packet.find("Port" + port) != std::string::npos) shown += packet;
      at = next;
    }
    EXPECT_THAT(shown, HasSubstr(c.shown)) << c.name;
  }
}

TEST(Dissector, ReassemblesFramesHoweverTheyAreSplit) {
  const Bytes request = KtcFrame(1, 0x05, {});
  const Bytes reply = KtcFrame(2, 0x05, FromHex("02 02 58 01 9c 00 05 42 33 00 00"));
  const Bytes serial = FromHex("24 4c 44 43 4d 44 2c 03 03 0b 00 00 44 33 22 11 89 05 2b 79 ee ff");
  Bytes stream;
  for (const Bytes* part : {&request, &reply, &serial, &request, &serial, &reply}) {
    stream.insert(stream.end(), part->begin(), part->end());
  }
  Wireshark wireshark({"Quenta"});
  for (std::size_t size = 1; size <= stream.size(); ++size) {
    for (std::size_t at = 0; at < stream.size(); at += size) {
      const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end = begin + static_cast<std::ptrdiff_t>(std::min(size, stream.size() - at));
      wireshark.capture().FromSensor({begin, end}, static_cast<std::uint16_t>(kFirstClient + size));
    }
  }
  const std::string shown = wireshark.Run("-V");
  const auto count = [&shown](const std::string& text) {
    std::size_t found = 0;
    for (std::size_t at = shown.find(text); at != std::string::npos; at = shown.find(text, at + 1)) ++found;
    return found;
  };
  EXPECT_EQ(count("Rotor Temperature (°C): 44.75"), 2 * stream.size());
  EXPECT_EQ(count("Contents: 0b0000"), 2 * stream.size());
  EXPECT_EQ(count("Bytes outside"), 0U);
  EXPECT_EQ(count("is wrong"), 0U);
}

TEST(Dissector, KnowsSmallSensorsAndEveryModel) {
  Wireshark wireshark({"Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"});
  Recorder recorder("Zelto-KTC", 1, wireshark.capture());
  recorder.Exchange(0x07, {});
  Bytes carried = {0, 2};
  const Bytes asked = quarn::lidar::EncodeCommandFrame(2, Bytes{10, 1}, 7);
  carried.insert(carried.end(), asked.begin(), asked.end());
  recorder.Exchange(0xFF, carried);
  EXPECT_THAT(wireshark.Run("-V"), HasSubstr("Model: Zelto-KTC"));
  const std::string shown =
      wireshark.Run("-o ktc.model:zelto_ktc -Y 'ktc.zelto_ktc.model == \"Zelto-KTC\" || ktcserial.text' -V");
  EXPECT_THAT(shown, HasSubstr("Model: Zelto-KTC"));
  EXPECT_THAT(shown, HasSubstr("Code: get (2)"));
  EXPECT_THAT(wireshark.Run("-o ktc.ports:1-9000 -Y ktc"), Not(HasSubstr("Reply")));
}

TEST(Dissector, RecordingsOfSerialLinesNeedNoPreference) {
  Wireshark wireshark({"Zelto"});
  wireshark.capture().sensor_port = 9348;
  wireshark.capture().FromSensor(
      FromHex("24 4c 44 43 4d 44 2c 08 02 0a 01 5a 31 32 33 34 00 07 00 00 00 8e 65 8e f8 ee ff"));
  EXPECT_THAT(wireshark.Run("-Y 'tcp.srcport == 9348' -V"), HasSubstr("Text: Z1234"));
}

TEST(Dissector, AcceptsAnyBytes) {
  constexpr std::size_t kStreams = 4000;
  std::vector<Bytes> frames;
  for (const char* page : {VARKEL_DOCS "/protocol.md", VARKEL_DOCS "/serial-protocol.md"}) {
    std::ifstream file(page);
    for (std::string line; std::getline(file, line);) {
      const std::size_t cell = line.rfind("| ", line.size() > 3 ? line.size() - 3 : 0);
      if (cell == std::string::npos) continue;
      const Bytes bytes = FromHex(line.substr(cell + 2));
      if (bytes.size() >= 8) frames.push_back(bytes);
    }
  }
  frames.push_back(KtcFrame(1, 0x05, FromHex("02 02 58 01 9c 00 05 42 33 00 00")));
  frames.push_back(KtcFrame(2, 0xFF, FromHex("01 00 01 01 01 5f 28 01 01 f4 00 00 00 00 00 00 07 d0")));
  frames.push_back(KtcFrame(1, 0x0B, Bytes(56, 'x')));
  ASSERT_GT(frames.size(), 25U);
  std::mt19937 random(15);
  const auto below = [&random](std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most - 1)(random);
  };
  Wireshark wireshark({"Quenta"});
  for (std::size_t i = 1; i <= kStreams; ++i) {
    Bytes stream;
    for (std::size_t n = 1 + below(4); n > 0; --n) {
      const Bytes& frame = frames[below(frames.size())];
      stream.insert(stream.end(), frame.begin(),
                    frame.end() - static_cast<std::ptrdiff_t>(below(8) == 0 ? below(8) : 0));
    }
    for (std::size_t n = below(6); n > 0; --n) {
      const std::size_t at = below(stream.size());
      // Plausible lengths reach deeper into the dissector than random bytes.
      stream[at] = static_cast<std::uint8_t>(below(3) == 0 ? below(32) : below(256));
    }
    for (std::size_t at = 0; at < stream.size();) {
      const std::size_t size = below(4) == 0 ? 1 + below(stream.size() - at) : stream.size() - at;
      const Bytes segment(stream.begin() + static_cast<std::ptrdiff_t>(at),
                          stream.begin() + static_cast<std::ptrdiff_t>(at + size));
      const auto port = static_cast<std::uint16_t>(kFirstClient + i);
      below(2) == 0 ? wireshark.capture().ToSensor(segment, port)
                    : wireshark.capture().FromSensor(segment, port);
      at += size;
    }
  }
  for (const char* options : {"-V", "-2 -V -o tcp.desegment_tcp_streams:FALSE"}) {
    const std::string shown = wireshark.Run(options);
    EXPECT_THAT(shown, HasSubstr("KTC lidar commands"));
    const std::size_t error = shown.find("Lua Error");
    EXPECT_EQ(error, std::string::npos) << shown.substr(error == std::string::npos ? 0 : error, 300);
  }
}

TEST(Dissector, NamesFieldsThatFiltersAccept) {
  const std::string path = testing::TempDir() + "names.csv";
  std::ofstream(path)
      << "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
         "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n"
         "1,1,0x40,,,Speed,0,uint8,,,,,,,,1,,\n"
         "1,2,0x40,,,speed!,0,uint8,,,,0.1,,,,1,,\n"
         "1,3,0x40,,,\"°\\\"\"\n]]\",0,string,,,,,,,,1,,\n"
         "1,4,33,,,A,0,uint8,,,,,,,,1,,0x01\n"
         "1,5,0x21,,,B,0,uint8,,,,,,,,1,,0x02\n";
  ConfigParser table(path);
  ASSERT_TRUE(table.ExtractConfigInfo());
  const DissectorModel model{"A b-C", &table};
  const std::string lua = WiresharkDissector(std::span(&model, 1));
  for (const char* text :
       {"name = \"A b-C\", key = \"a_b_c\"", "{key = \"speed\",", "{key = \"speed_1_2\",",
        "{key = \"unnamed\",", "name = \"°\\\\\\\"\\010]]\"", "scale = 0.10000000149011612",
        "[\"21\"] = {name = \"B and 1 more\", reads = {{1, 0, \"02\"}, {2, 0, \"01\"}}, read_size = 1}"}) {
    EXPECT_THAT(lua, HasSubstr(text));
  }
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace varkel
