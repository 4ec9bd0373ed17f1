#include "libquarn/Source/src/serial_frame.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/serial_port.h"
#include "libquarn/Source/src/reply_assembler.h"
#include "tests/support/protocol_page.h"

namespace quarn::lidar {
namespace {

using test::FromHex;
using Bytes = std::vector<std::uint8_t>;
using State = ReplyAssembler::State;

auto Table(const std::string& heading) {
  return test::PageTable(QUARN_SERIAL_PAGE, heading);
}

std::uint32_t Number(const std::string& hex) {
  return static_cast<std::uint32_t>(std::stoul(hex, nullptr, 16));
}

ReplyKind Kind(const std::string& text) {
  return static_cast<ReplyKind>(std::stoi(text));
}

Bytes Joined(const Bytes& front, const Bytes& back) {
  Bytes all = front;
  all.insert(all.end(), back.begin(), back.end());
  return all;
}

Bytes Text(const std::string& text) {
  return {text.begin(), text.end()};
}

Bytes GoodReply() {
  return EncodeReplyFrame(ReplyKind::kCommand, 3, Bytes{11, 0, 0}, 0x11223344);
}

TEST(SerialFrames, RequestsMatchTheProtocolPage) {
  const auto commands = Table("| Code | Payload | Nonce | Command frame |");
  ASSERT_EQ(commands.size(), 4U);
  for (const auto& row : commands) {
    EXPECT_EQ(EncodeCommandFrame(FromHex(row[0])[0], FromHex(row[1]), Number(row[2])), FromHex(row[3]))
        << row[3];
  }
  const auto firmware = Table("| Type | First | Second | Data | Firmware frame |");
  ASSERT_EQ(firmware.size(), 4U);
  for (const auto& row : firmware) {
    EXPECT_EQ(EncodeOtaFrame(FromHex(row[0])[0], Number(row[1]), Number(row[2]), FromHex(row[3])),
              FromHex(row[4]))
        << row[4];
  }
}

TEST(SerialFrames, RepliesMatchTheProtocolPage) {
  const auto good = Table("| Kind | Code | Body | Good reply |");
  ASSERT_EQ(good.size(), 5U);
  for (const auto& row : good) {
    const Bytes reply = FromHex(row[3]);
    EXPECT_TRUE(CheckReply(Kind(row[0]), reply)) << row[3];
    EXPECT_TRUE(std::ranges::equal(ReplyBody(reply), FromHex(row[2]))) << row[3];
  }
  const auto refused = Table("| Fault | Kind | Refused reply |");
  ASSERT_EQ(refused.size(), 7U);
  for (const auto& row : refused) {
    EXPECT_FALSE(CheckReply(Kind(row[1]), FromHex(row[2]))) << row[0];
  }
}

TEST(SerialFrames, EveryChangeBehindTheTagIsNoticed) {
  const Bytes good = GoodReply();
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_FALSE(CheckReply(ReplyKind::kCommand, std::span(good).first(size))) << size;
  }
  for (std::size_t bit = kSerialTagSize * 8; bit < good.size() * 8; ++bit) {
    Bytes changed = good;
    changed[bit / 8] = static_cast<std::uint8_t>(changed[bit / 8] ^ (1U << (bit % 8)));
    EXPECT_FALSE(CheckReply(ReplyKind::kCommand, changed)) << bit;
  }
}

TEST(SerialFrames, LengthByteOfLongPayloadsWraps) {
  EXPECT_EQ(EncodeCommandFrame(2, Bytes(254), 0)[7], 255);
  EXPECT_EQ(EncodeCommandFrame(2, Bytes(255), 0)[7], 0);
  EXPECT_EQ(EncodeCommandFrame(2, Bytes(300), 0)[7], 45);
}

TEST(SerialFrames, NoncesDiffer) {
  const std::uint32_t first = FreshNonce();
  EXPECT_TRUE(first != FreshNonce() || first != FreshNonce());
}

TEST(ByteOrder, LittleEndianRoundTrip) {
  Bytes bytes(6, 0xAA);
  StoreLittleEndian<std::uint32_t>(bytes, 1, 0x01020384U);
  EXPECT_EQ(bytes, (Bytes{0xAA, 0x84, 0x03, 0x02, 0x01, 0xAA}));
  EXPECT_EQ(LoadLittleEndian<std::uint32_t>(bytes, 1), 0x01020384U);
  EXPECT_EQ(LoadLittleEndian<std::uint16_t>(bytes, 1), 0x0384U);
}

TEST(SerialPortNames, LongOnesGetTheDevicePrefix) {
  EXPECT_EQ(platform::WindowsDeviceName("COM3"), "COM3");
  EXPECT_EQ(platform::WindowsDeviceName("COM12"), "\\\\.\\COM12");
}

TEST(ReplyAssembler, TakesEverySplitWithAndWithoutNoise) {
  const Bytes good = GoodReply();
  const std::vector<Bytes> noises = {
      {}, {0}, Text("$"), Text("$LDCMD"), Text("$LD$LDOTA,\x05"), Bytes(5000, 0xEE)};
  for (const Bytes& noise : noises) {
    const Bytes stream = Joined(noise, good);
    // Two pieces, cut everywhere in the reply; then byte by byte.
    for (std::size_t cut = noise.size(); cut < stream.size(); ++cut) {
      ReplyAssembler assembler(ReplyKind::kCommand);
      ASSERT_EQ(assembler.Add(std::span(stream).first(cut)), State::kIncomplete) << cut;
      ASSERT_EQ(assembler.Add(std::span(stream).subspan(cut)), State::kPassed) << cut;
      EXPECT_TRUE(std::ranges::equal(assembler.block(), good)) << cut;
    }
    ReplyAssembler assembler(ReplyKind::kCommand);
    State state = State::kIncomplete;
    std::size_t used = 0;
    for (; state == State::kIncomplete && used < stream.size(); ++used) {
      state = assembler.Add(std::span(stream).subspan(used, 1));
    }
    EXPECT_EQ(state, State::kPassed);
    EXPECT_EQ(used, stream.size());
  }
}

TEST(ReplyAssembler, FindsTheReplyBehindAStumpOfAnother) {
  const Bytes older = EncodeReplyFrame(ReplyKind::kCommand, 2, Bytes(200, 7), 9);
  const Bytes good = GoodReply();
  for (std::size_t stump = 0; stump < older.size(); ++stump) {
    const Bytes stream =
        Joined(Bytes(older.begin(), older.begin() + static_cast<std::ptrdiff_t>(stump)), good);
    ReplyAssembler assembler(ReplyKind::kCommand);
    State state = State::kIncomplete;
    for (std::size_t at = 0; at < stream.size() && state == State::kIncomplete; ++at) {
      state = assembler.Add(std::span(stream).subspan(at, 1));
    }
    ASSERT_EQ(state, State::kPassed) << stump;
    EXPECT_TRUE(std::ranges::equal(assembler.block(), good)) << stump;
  }
}

TEST(ReplyAssembler, WrongRepliesFailAtOnceAndUnfinishedOnesAtTheEnd) {
  Bytes wrong = GoodReply();
  wrong[10] ^= 1;
  ReplyAssembler at_once(ReplyKind::kCommand);
  EXPECT_EQ(at_once.Add(wrong), State::kFailed);
  EXPECT_EQ(at_once.Add(GoodReply()), State::kFailed);

  // A length byte that counts the command code too asks for a byte that never comes.
  Bytes longer = GoodReply();
  ++longer[7];
  ReplyAssembler unfinished(ReplyKind::kCommand);
  EXPECT_EQ(unfinished.Add(longer), State::kIncomplete);
  EXPECT_EQ(unfinished.Finish(), State::kFailed);

  ReplyAssembler silent(ReplyKind::kOta);
  EXPECT_EQ(silent.Finish(), State::kFailed);
}

TEST(ReplyAssembler, TakesABlockWhoseTagIsGarbled) {
  Bytes garbled = GoodReply();
  garbled[0] = 0;
  ReplyAssembler assembler(ReplyKind::kCommand);
  EXPECT_EQ(assembler.Add(garbled), State::kPassed);
}

TEST(ReplyAssembler, LeavesWhatFollowsTheReply) {
  ReplyAssembler assembler(ReplyKind::kCommand);
  EXPECT_EQ(assembler.Add(Joined(GoodReply(), Bytes(100, 0x24))), State::kPassed);
  EXPECT_TRUE(std::ranges::equal(assembler.block(), GoodReply()));
}

TEST(ReplyAssembler, EndlessNoiseTakesOneBlock) {
  ReplyAssembler assembler(ReplyKind::kCommand);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(assembler.Add(Bytes(100, 0x24)), State::kIncomplete);
    ASSERT_LE(assembler.block().size(), kMaxReplyBlock);
  }
}

}  // namespace
}  // namespace quarn::lidar
