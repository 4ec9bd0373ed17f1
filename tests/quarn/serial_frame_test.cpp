#include "libquarn/Source/src/serial_frame.h"

#include <gtest/gtest.h>

#include <algorithm>

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

auto Table(const std::string& heading, std::size_t rows) {
  auto table = test::PageTable(QUARN_SERIAL_PAGE, heading);
  EXPECT_EQ(table.size(), rows);
  return table;
}

std::uint32_t Number(const std::string& hex) {
  return static_cast<std::uint32_t>(std::stoul(hex, nullptr, 16));
}

Bytes GoodReply() {
  return EncodeReplyFrame(ReplyKind::kCommand, 3, Bytes{11, 0, 0}, 0x11223344);
}

TEST(SerialFrames, MatchTheProtocolPage) {
  for (const auto& row : Table("| Code | Payload | Nonce | Command frame |", 4)) {
    EXPECT_EQ(EncodeCommandFrame(FromHex(row[0])[0], FromHex(row[1]), Number(row[2])), FromHex(row[3]));
  }
  for (const auto& row : Table("| Type | First | Second | Data | Firmware frame |", 4)) {
    EXPECT_EQ(EncodeOtaFrame(FromHex(row[0])[0], Number(row[1]), Number(row[2]), FromHex(row[3])),
              FromHex(row[4]));
  }
  for (const auto& row : Table("| Kind | Code | Body | Good reply |", 5)) {
    const Bytes reply = FromHex(row[3]);
    EXPECT_TRUE(CheckReply(static_cast<ReplyKind>(Number(row[0])), reply)) << row[3];
    EXPECT_TRUE(std::ranges::equal(ReplyBody(reply), FromHex(row[2]))) << row[3];
  }
  for (const auto& row : Table("| Fault | Kind | Refused reply |", 7)) {
    EXPECT_FALSE(CheckReply(static_cast<ReplyKind>(Number(row[1])), FromHex(row[2]))) << row[0];
  }
}

TEST(SerialFrames, LengthsWrapNoncesDifferAndPortsGetTheirPrefix) {
  for (const auto& [size, length] : {std::pair{254, 255}, {255, 0}, {300, 45}}) {
    EXPECT_EQ(EncodeCommandFrame(2, Bytes(static_cast<std::size_t>(size)), 0)[7], length);
  }
  const std::uint32_t first = FreshNonce();
  EXPECT_TRUE(first != FreshNonce() || first != FreshNonce());
  EXPECT_EQ(platform::WindowsDeviceName("COM3"), "COM3");
  EXPECT_EQ(platform::WindowsDeviceName("COM12"), "\\\\.\\COM12");
}

// Whatever the pieces, with and without noise in front; what follows the reply is no part of it.
TEST(ReplyAssembler, TakesEverySplitWithAndWithoutNoise) {
  const Bytes reply = GoodReply();
  // Stumps of older replies: one claims bytes up to within the true tag, the other beyond it.
  const Bytes stumps[] = {{reply.begin(), reply.begin() + 18}, {reply.begin(), reply.begin() + 12}};
  for (const Bytes& noise :
       {Bytes{}, Bytes(reply.begin(), reply.begin() + 6), stumps[0], stumps[1], Bytes(5000, 0xEE)}) {
    const Bytes stream = Joined({noise, reply, Bytes(100, 0x24)});
    const std::size_t end = noise.size() + reply.size();
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, stream.size()}) {
      ReplyAssembler assembler(ReplyKind::kCommand);
      State state = State::kIncomplete;
      for (std::size_t at = 0; at < end; at += piece) {
        ASSERT_EQ(state, State::kIncomplete) << noise.size() << " " << piece << " " << at;
        state = assembler.Add(std::span(stream).subspan(at, std::min(piece, stream.size() - at)));
      }
      EXPECT_EQ(state, State::kPassed) << noise.size() << " " << piece;
      EXPECT_TRUE(std::ranges::equal(assembler.block(), reply));
    }
  }
  Bytes garbled_tag = reply;
  garbled_tag[0] = 0;
  for (const Bytes& earlier : {Bytes{}, stumps[1]}) {
    ReplyAssembler assembler(ReplyKind::kCommand);
    assembler.Add(earlier);
    EXPECT_EQ(assembler.Add(garbled_tag), State::kPassed);
  }
}

TEST(ReplyAssembler, WrongRepliesFailAtOnceAndUnfinishedOnesAtTheEnd) {
  Bytes wrong = GoodReply();
  wrong[10] ^= 1;
  Bytes longer = GoodReply();
  ++longer[7];  // counts the command code too, and so asks for a byte that never comes
  const std::pair<Bytes, State> kCases[] = {{wrong, State::kFailed},
                                            {longer, State::kIncomplete},
                                            {{}, State::kIncomplete},
                                            {Bytes(100000, 0x24), State::kIncomplete}};
  for (const auto& [stream, state] : kCases) {
    ReplyAssembler assembler(ReplyKind::kCommand);
    EXPECT_EQ(assembler.Add(stream), state) << stream.size();
    EXPECT_LE(assembler.block().size(), kMaxReplyBlock);
    EXPECT_EQ(assembler.Finish(), State::kFailed);
  }
}

}  // namespace
}  // namespace quarn::lidar
