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
using test::PageTable;

std::uint32_t Number(const std::string& hex) {
  return static_cast<std::uint32_t>(std::stoul(hex, nullptr, 16));
}

TEST(SerialFrames, MatchTheProtocolPage) {
  for (const auto& row : PageTable(QUARN_SERIAL_PAGE, "| Code | Payload | Nonce | Command frame |", 4)) {
    EXPECT_EQ(EncodeCommandFrame(FromHex(row[0])[0], FromHex(row[1]), Number(row[2])), FromHex(row[3]));
  }
  for (const auto& row :
       PageTable(QUARN_SERIAL_PAGE, "| Type | First | Second | Data | Firmware frame |", 4)) {
    EXPECT_EQ(EncodeOtaFrame(FromHex(row[0])[0], Number(row[1]), Number(row[2]), FromHex(row[3])),
              FromHex(row[4]));
  }
  for (const auto& row : PageTable(QUARN_SERIAL_PAGE, "| Kind | Code | Body | Good reply |", 5)) {
    const Bytes reply = FromHex(row[3]);
    EXPECT_TRUE(CheckReply(static_cast<ReplyKind>(Number(row[0])), reply)) << row[3];
    EXPECT_TRUE(std::ranges::equal(ReplyBody(reply), FromHex(row[2]))) << row[3];
  }
  for (const auto& row : PageTable(QUARN_SERIAL_PAGE, "| Fault | Kind | Refused reply |", 7)) {
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

// Replies with an intact tag, after noise and split anywhere, are covered by fuzz/serial_reply.cpp.
TEST(ReplyAssembler, AcceptsAGarbledTagInPiecesAndKeepsNoMoreThanABlock) {
  Bytes reply = EncodeReplyFrame(ReplyKind::kCommand, 3, Bytes{11, 0, 0}, 0x11223344);
  reply[0] = 0;
  ReplyAssembler assembler(ReplyKind::kCommand);
  EXPECT_EQ(assembler.Add(std::span(reply).first(9)), ReplyAssembler::State::kIncomplete);
  EXPECT_EQ(assembler.Add(std::span(reply).subspan(9)), ReplyAssembler::State::kPassed);
  ReplyAssembler flooded(ReplyKind::kCommand);
  EXPECT_EQ(flooded.Add(Bytes(100000, 0x24)), ReplyAssembler::State::kIncomplete);
  EXPECT_LE(flooded.block().size(), kMaxReplyBlock);
}

}  // namespace
}  // namespace quarn::lidar
