#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "libquarn/Capture/src/capture_recorder.h"
#include "libquarn/Capture/src/captured_exchanges.h"
#include "libquarn/Platform/src/byte_order.h"
#include "tests/quarn/bytes.h"
#include "tests/support/protocol_page.h"

namespace quarn::lidar {
namespace {

using test::Bytes;
using test::Counting;
using test::FromHex;
using Answer = CapturedExchange::Answer;
using enum WireDirection;

constexpr TcpEndpoint kSensor = {{10, 0, 0, 7}, 9347};
constexpr TcpEndpoint kTool = {{10, 0, 0, 1}, 50000};

/// A file and a recorder, with the messages it reported.
struct RecorderFixture {
  explicit RecorderFixture(std::uint64_t largest = CaptureRecorder::kLargestFile)
      : recorder([this](const std::string& text) { said.push_back(text); }, largest) {
    EXPECT_EQ(recorder.Start(path), "");
  }
  ~RecorderFixture() {
    recorder.Stop();
    std::filesystem::remove(path);
  }

  std::string File() const {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }

  std::filesystem::path path = std::filesystem::temp_directory_path() /
                               ("capture_test_" + std::to_string(std::random_device()()) + ".pcap");
  std::vector<std::string> said;
  CaptureRecorder recorder;
};

struct Read {
  explicit Read(const std::string& file) {
    std::istringstream in(file);
    summary = ReadCapture(in, [this](const CapturedExchange& exchange) { exchanges.push_back(exchange); });
  }
  /// An exchange as "1 07>00 4b": connection, command, code and how much of the reply arrived.
  std::string Text() const {
    std::ostringstream text;
    for (const CapturedExchange& e : exchanges) {
      text << e.connection << " " << unsigned{e.command} << ">";
      if (e.answer == Answer::kNone) text << "-";
      if (e.answer != Answer::kNone) text << unsigned{e.return_code} << " " << e.reply.size();
      if (e.answer == Answer::kIncomplete) text << "/" << e.announced;
      if (e.answer != Answer::kNone && e.reply_command != e.command) {
        text << " as " << unsigned{e.reply_command};
      }
      text << "; ";
    }
    return text.str();
  }

  CaptureSummary summary;
  std::vector<CapturedExchange> exchanges;
};

Bytes Frame(std::uint8_t command, const Bytes& payload = {}, std::uint8_t code = 0) {
  Bytes frame = {0x47, 0x74, command, code, 0, 0, 0, 0};
  StoreBigEndian(frame, 4, static_cast<std::uint32_t>(payload.size()));
  frame.insert(frame.end(), payload.begin(), payload.end());
  return frame;
}

TEST(Capture, ReturnsWhatWentOverTheWire) {
  RecorderFixture fixture;
  const auto first = fixture.recorder.Connection(kSensor);
  const Bytes log = Counting(10000);
  first->Pass(kToSensor, Frame(7, {1, 2}));
  const Bytes reply = Frame(7, log);
  first->Pass(kFromSensor, std::span(reply).first(5));
  first->Pass(kFromSensor, std::span(reply).subspan(5));
  auto second = fixture.recorder.Connection(kSerialLinesEndpoint);
  second->Pass(kToSensor, FromHex("24 4c 44 43 4d 44 2c 02 02 07 00 00 00 00 87 f0 31 01 ee ff"));
  second->Pass(kFromSensor, Counting(20));
  second.reset();
  const Read read(fixture.File());  // while it is being written
  EXPECT_EQ(read.Text(), "1 7>0 10000; 2 2>0 20; ");
  EXPECT_EQ(read.exchanges[0].request, Bytes({1, 2}));
  EXPECT_EQ(read.exchanges[0].reply, log);
  EXPECT_EQ(FormatEndpoint(read.exchanges[0].sensor), "10.0.0.7:9347");
  EXPECT_LT(std::chrono::abs(read.exchanges[0].asked - std::chrono::system_clock::now()),
            std::chrono::minutes(1));
  EXPECT_EQ(read.summary.fault, "");
}

// Replies are matched to requests as the client does.
TEST(Capture, PairsLateBrokenAndForeignReplies) {
  struct Piece {
    WireDirection direction;
    Bytes bytes;
  };
  const Bytes half = {0x47, 0x74, 5, 0, 0, 0, 0, 9, 1, 2};
  const struct {
    const char* what;
    std::vector<Piece> pieces;
    const char* text;
    std::uint64_t unsolicited = 0;
    std::uint64_t noise = 0;
  } kCases[] = {
      {"late",
       {{kToSensor, Frame(5)}, {kFromSensor, Frame(5, {1})}, {kToSensor, Frame(6)}},
       "1 5>0 1; 1 6>-; "},
      {"later",
       {{kToSensor, Frame(5)}, {kToSensor, Frame(6)}, {kFromSensor, Frame(5, {1})}},
       "1 5>0 1; 1 6>-; "},
      {"silence",
       {{kToSensor, Frame(5)}, {kToSensor, Frame(5)}, {kFromSensor, Frame(5)}},
       "1 5>-; 1 5>0 0; "},
      {"broken off",
       {{kToSensor, Frame(5)}, {kFromSensor, half}, {kToSensor, Frame(6)}, {kFromSensor, Frame(6)}},
       "1 5>0 2/9; 1 6>0 0; "},
      {"at the end", {{kToSensor, Frame(5)}, {kFromSensor, half}}, "1 5>0 2/9; "},
      {"refused", {{kToSensor, Frame(5)}, {kFromSensor, Frame(5, {}, 3)}}, "1 5>3 0; "},
      {"other", {{kToSensor, Frame(5)}, {kFromSensor, Frame(6)}}, "1 5>0 0 as 6; "},
      {"unsolicited",
       {{kToSensor, Frame(5)}, {kFromSensor, Frame(5)}, {kFromSensor, Frame(5)}},
       "1 5>0 0; ",
       1},
      {"noise",
       {{kToSensor, Frame(5)}, {kFromSensor, {0x47, 1, 2}}, {kFromSensor, Frame(5)}},
       "1 5>0 0; ",
       0,
       3},
  };
  for (const auto& c : kCases) {
    RecorderFixture fixture;
    const auto tap = fixture.recorder.Connection(kSensor);
    for (const Piece& piece : c.pieces) tap->Pass(piece.direction, piece.bytes);
    const Read read(fixture.File());
    EXPECT_EQ(read.Text(), c.text) << c.what;
    EXPECT_EQ(read.summary.unsolicited, c.unsolicited) << c.what;
    EXPECT_EQ(read.summary.noise, c.noise) << c.what;
  }
}

TEST(CaptureRecorder, BeginsAndEndsWhenever) {
  RecorderFixture fixture;
  fixture.recorder.Stop();
  const auto tap = fixture.recorder.Connection(kSensor);
  tap->Pass(kToSensor, Frame(1));  // not recording
  EXPECT_EQ(Read(fixture.File()).Text(), "");
  for (int recording = 0; recording < 2; ++recording) {
    EXPECT_EQ(fixture.recorder.Start(fixture.path), "");
    tap->Pass(kToSensor, Frame(2));
    tap->Pass(kFromSensor, Frame(2));
    EXPECT_EQ(Read(fixture.File()).Text(), "1 2>0 0; ");
  }
  EXPECT_EQ(fixture.recorder.Start(fixture.path / "no" / "folder"),
            "The recording can't be written to " + (fixture.path / "no" / "folder").string() + ".");
  EXPECT_FALSE(fixture.recorder.is_recording());
}

TEST(CaptureRecorder, EndsAtItsMaximumSizeWithAMessage) {
  RecorderFixture fixture(20'000);
  const auto tap = fixture.recorder.Connection(kSensor);
  for (int i = 0; i < 10; ++i) {
    tap->Pass(kToSensor, Frame(2));
    tap->Pass(kFromSensor, Frame(2, Counting(4000)));
  }
  ASSERT_EQ(fixture.said.size(), 1U);
  EXPECT_NE(fixture.said[0].find("has ended: it has reached"), std::string::npos);
  EXPECT_FALSE(fixture.recorder.is_recording());
  const Read read(fixture.File());
  EXPECT_LE(fixture.File().size(), 20'000U);
  EXPECT_EQ(read.summary.fault, "");
  EXPECT_GE(read.exchanges.size(), 4U);
}

// ---- Files from other programs

/// A file in either byte order, with any link type.
class File {
 public:
  File(bool is_little, std::uint32_t magic, std::uint32_t link) : is_little_(is_little) {
    for (const std::uint32_t number : {magic, 0x00040002U, 0U, 0U, 262144U, link}) Put(number);
  }
  File& Packet(Bytes head, const TcpSegment& segment, std::uint32_t fraction = 0) {
    const Bytes ip = EncodeTcpPacket(segment, 1);
    head.insert(head.end(), ip.begin(), ip.end());
    for (const std::size_t number :
         {std::size_t{1'700'000'000}, std::size_t{fraction}, head.size(), head.size()}) {
      Put(static_cast<std::uint32_t>(number));
    }
    text.append(head.begin(), head.end());
    return *this;
  }

  std::string text;

 private:
  void Put(std::uint32_t number) {
    Bytes bytes(4);
    is_little_ ? StoreLittleEndian(bytes, 0, number) : StoreBigEndian(bytes, 0, number);
    text.append(bytes.begin(), bytes.end());
  }
  const bool is_little_;
};

TcpSegment Segment(WireDirection direction, std::uint32_t sequence, std::span<const std::uint8_t> payload,
                   std::uint8_t flags = kTcpAck) {
  const bool to_sensor = direction == kToSensor;
  return {to_sensor ? kTool : kSensor, to_sensor ? kSensor : kTool, sequence, 0, flags, payload};
}

TEST(CaptureFile, ReadsEveryKind) {
  const Bytes ethernet = FromHex("01 02 03 04 05 06 0a 0b 0c 0d 0e 0f 08 00");
  const Bytes tagged = FromHex("01 02 03 04 05 06 0a 0b 0c 0d 0e 0f 81 00 00 05 08 00");
  const struct {
    bool is_little;
    std::uint32_t magic;
    std::uint32_t link;
    Bytes head;
    std::int64_t delay_ns;
  } kCases[] = {{true, kPcapMicroseconds, kLinkRawIp, {}, 500'000},
                {false, kPcapMicroseconds, kLinkEthernet, ethernet, 500'000},
                {true, kPcapNanoseconds, kLinkEthernet, tagged, 500},
                {false, kPcapNanoseconds, kLinkLoopback, {2, 0, 0, 0}, 500},
                {true, kPcapMicroseconds, kLinkLinuxCooked,
                 FromHex("00 00 00 01 00 06 01 02 03 04 05 06 00 00 08 00"), 500'000}};
  const Bytes request = Frame(7);
  const Bytes reply = Frame(7, {1, 2, 3});
  for (const auto& c : kCases) {
    File file(c.is_little, c.magic, c.link);
    file.Packet(c.head, Segment(kToSensor, 0, request));
    file.Packet(c.head, Segment(kFromSensor, 90, reply), 500);
    const Read read(file.text);
    EXPECT_EQ(read.Text(), "1 7>0 3; ") << c.link;
    ASSERT_EQ(read.exchanges.size(), 1U);
    EXPECT_EQ((read.exchanges[0].answered - read.exchanges[0].asked).count(), c.delay_ns) << c.link;
  }
}

TEST(CaptureFile, ReassemblesSegments) {
  const Bytes request = Frame(7);
  const Bytes reply = Frame(7, Counting(12));  // 20 bytes
  const auto part = [&](std::size_t from, std::size_t size) {
    return Segment(kFromSensor, static_cast<std::uint32_t>(0xFFFFFFF8 + from),
                   std::span(reply).subspan(from, size));
  };
  const struct {
    const char* what;
    std::vector<TcpSegment> segments;
    const char* text;
    std::uint64_t lost = 0;
  } kCases[] = {
      {"whole", {part(0, 20)}, "1 7>0 12; "},
      {"split, over the numbers' end", {part(0, 3), part(3, 7), part(10, 10)}, "1 7>0 12; "},
      {"sent twice", {part(0, 10), part(0, 10), part(10, 10)}, "1 7>0 12; "},
      {"overlapping", {part(0, 12), part(4, 16)}, "1 7>0 12; "},
      {"a gap", {part(0, 10), part(15, 5)}, "1 7>0 2/12; ", 5},
      {"reset", {part(0, 10), Segment(kFromSensor, 2, {}, kTcpRst), part(10, 10)}, "1 7>0 2/12; "},
  };
  for (const auto& c : kCases) {
    File file(true, kPcapMicroseconds, kLinkRawIp);
    file.Packet({}, Segment(kToSensor, 5, {}, kTcpSyn)).Packet({}, Segment(kToSensor, 6, request));
    for (const TcpSegment& segment : c.segments) file.Packet({}, segment);
    const Read read(file.text);
    EXPECT_EQ(read.Text(), c.text) << c.what;
    EXPECT_EQ(read.summary.lost, c.lost) << c.what;
  }
}

TEST(CaptureFile, SaysWhatIsWrong) {
  const struct {
    Bytes file;
    const char* fault;
  } kCases[] = {
      {{}, "The file is not a pcap capture."},
      {FromHex("0a 0d 0d 0a 00 00"), "The file is in the pcapng format: save it as pcap (editcap -F pcap)."},
      {FromHex("d4 c3 b2 a1 02 00"), "The file ends within its header."}};
  for (const auto& c : kCases) EXPECT_EQ(Read({c.file.begin(), c.file.end()}).summary.fault, c.fault);

  RecorderFixture fixture;
  const auto tap = fixture.recorder.Connection(kSensor);
  for (int i = 0; i < 2; ++i) {
    tap->Pass(kToSensor, Frame(7));
    tap->Pass(kFromSensor, Frame(7, {1, 2, 3}));
  }
  const std::string whole = fixture.File();
  std::size_t whole_ends = 0;
  for (std::size_t size = kPcapHeaderSize; size < whole.size(); ++size) {
    const Read read(whole.substr(0, size));
    whole_ends += read.summary.fault.empty() ? 1 : 0;
    EXPECT_LE(read.exchanges.size(), 2U) << size;
    for (const CapturedExchange& exchange : read.exchanges) EXPECT_EQ(exchange.command, 7) << size;
  }
  EXPECT_EQ(whole_ends, Read(whole).summary.packets);  // after the header and each packet but the last
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string flipped = whole;
    flipped[i] = static_cast<char>(flipped[i] ^ 0x80);
    EXPECT_LE(Read(flipped).exchanges.size(), 4U) << i;
  }
  std::string lie = whole;
  lie.replace(kPcapHeaderSize + 8, 4, "\xFF\xFF\xFF\x7F");
  EXPECT_EQ(Read(lie).summary.fault, "The file is damaged: a packet of 2147483647 bytes after 0 packets.");
}

}  // namespace
}  // namespace quarn::lidar
