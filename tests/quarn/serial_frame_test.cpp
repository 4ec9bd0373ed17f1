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

// Behind noise and in any split fuzz/serial_reply.cpp looks for them.
TEST(ReplyAssembler, JudgesWholeWrongAndUnfinishedReplies) {
  const Bytes reply = EncodeReplyFrame(ReplyKind::kCommand, 3, Bytes{11, 0, 0}, 0x11223344);
  const Bytes stump(reply.begin(), reply.begin() + 12);
  Bytes garbled_tag = reply;
  garbled_tag[0] = 0;
  Bytes wrong = reply;
  wrong[10] ^= 1;
  Bytes longer = reply;
  ++longer[7];  // counts the command code too, and so asks for a byte that never comes
  const struct {
    Bytes first, then;
    State state;
  } kCases[] = {{{}, Joined({reply, {0x24}}), State::kPassed},
                {stump, reply, State::kPassed},
                {stump, garbled_tag, State::kPassed},
                {{garbled_tag.begin(), garbled_tag.begin() + 9},
                 {garbled_tag.begin() + 9, garbled_tag.end()},
                 State::kPassed},
                {{}, wrong, State::kFailed},
                {{}, longer, State::kIncomplete},
                {{}, Bytes(100000, 0x24), State::kIncomplete}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(&c - kCases);
    ReplyAssembler assembler(ReplyKind::kCommand);
    EXPECT_EQ(assembler.Add(c.first), State::kIncomplete);
    EXPECT_EQ(assembler.Add(c.then), c.state);
    EXPECT_LE(assembler.block().size(), kMaxReplyBlock);
    EXPECT_EQ(assembler.Finish(), c.state == State::kPassed ? c.state : State::kFailed);
  }
}

}  // namespace
}  // namespace quarn::lidar
