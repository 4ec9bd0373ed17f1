#include "libquarn/Source/src/serial_frame.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/serial_port.h"
#include "libquarn/Source/src/reply_assembler.h"
#include "tests/quarn/bytes.h"
#include "tests/support/protocol_page.h"

namespace quarn::lidar {
namespace {

using test::Bytes;
using test::FromHex;
using test::Joined;
using State = ReplyAssembler::State;

auto Table(const std::string& heading) {
  return test::PageTable(QUARN_SERIAL_PAGE, heading);
}

std::uint32_t Number(const std::string& hex) {
  return static_cast<std::uint32_t>(std::stoul(hex, nullptr, 16));
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
    EXPECT_TRUE(CheckReply(static_cast<ReplyKind>(Number(row[0])), reply)) << row[3];
    EXPECT_TRUE(std::ranges::equal(ReplyBody(reply), FromHex(row[2]))) << row[3];
  }
  const auto refused = Table("| Fault | Kind | Refused reply |");
  ASSERT_EQ(refused.size(), 7U);
  for (const auto& row : refused) {
    EXPECT_FALSE(CheckReply(static_cast<ReplyKind>(Number(row[1])), FromHex(row[2]))) << row[0];
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

TEST(SerialFrames, LengthsWrapNoncesDifferAndPortsGetTheirPrefix) {
  for (const auto& [size, length] : {std::pair{254, 255}, {255, 0}, {300, 45}}) {
    EXPECT_EQ(EncodeCommandFrame(2, Bytes(static_cast<std::size_t>(size)), 0)[7], length);
  }
  const std::uint32_t first = FreshNonce();
  EXPECT_TRUE(first != FreshNonce() || first != FreshNonce());
  Bytes bytes(6, 0xAA);
  StoreLittleEndian<std::uint32_t>(bytes, 1, 0x01020384U);
  EXPECT_EQ(bytes, (Bytes{0xAA, 0x84, 0x03, 0x02, 0x01, 0xAA}));
  EXPECT_EQ(LoadLittleEndian<std::uint32_t>(bytes, 1), 0x01020384U);
  EXPECT_EQ(platform::WindowsDeviceName("COM3"), "COM3");
  EXPECT_EQ(platform::WindowsDeviceName("COM12"), "\\\\.\\COM12");
}

// Adds the stream in pieces until the reply has come; what was used of it must be all.
void ExpectTaken(const Bytes& stream, std::size_t first_piece, std::size_t piece, const Bytes& reply) {
  ReplyAssembler assembler(ReplyKind::kCommand);
  State state = assembler.Add(std::span(stream).first(first_piece));
  for (std::size_t at = first_piece; at < stream.size(); at += piece) {
    ASSERT_EQ(state, State::kIncomplete) << first_piece << " " << at;
    state = assembler.Add(std::span(stream).subspan(at, std::min(piece, stream.size() - at)));
  }
  EXPECT_EQ(state, State::kPassed) << first_piece;
  EXPECT_TRUE(std::ranges::equal(assembler.block(), reply)) << first_piece;
}

TEST(ReplyAssembler, TakesEverySplitWithAndWithoutNoise) {
  const Bytes good = GoodReply();
  const std::vector<Bytes> noises = {
      {}, {0}, Text("$"), Text("$LDCMD"), Text("$LD$LDOTA,\x05"), Bytes(5000, 0xEE)};
  for (const Bytes& noise : noises) {
    const Bytes stream = Joined({noise, good});
    for (std::size_t cut = noise.size(); cut < stream.size(); ++cut) {
      ExpectTaken(stream, cut, stream.size(), good);
    }
    ExpectTaken(stream, 0, 1, good);
  }
  const Bytes older = EncodeReplyFrame(ReplyKind::kCommand, 2, Bytes(200, 7), 9);
  for (std::size_t stump = 0; stump < older.size(); ++stump) {
    const auto end = older.begin() + static_cast<std::ptrdiff_t>(stump);
    ExpectTaken(Joined({Bytes(older.begin(), end), good}), 0, 1, good);
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

TEST(ReplyAssembler, TakesAGarbledTagAndLeavesWhatFollowsTheReply) {
  Bytes garbled = GoodReply();
  garbled[0] = 0;
  EXPECT_EQ(ReplyAssembler(ReplyKind::kCommand).Add(garbled), State::kPassed);
  ReplyAssembler assembler(ReplyKind::kCommand);
  EXPECT_EQ(assembler.Add(Joined({GoodReply(), Bytes(100, 0x24)})), State::kPassed);
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
