#include <gtest/gtest.h>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/ota_transfer.h"
#include "tests/quarn/bytes.h"
#include "tests/support/scripted_exchange.h"

namespace quarn::lidar {
namespace {

using test::Bytes;
using test::Counting;
using test::ScriptedExchange;
using Frame = ScriptedExchange::OtaFrame;

TEST(OtaTransfer, SendsStartBlocksAndEnd) {
  const Bytes block0(1024, 1);
  const Bytes block1(452, 3);
  const Bytes package = test::Joined({block0, block1});
  std::atomic<std::uint32_t> progress{99};
  ScriptedExchange exchange;
  EXPECT_TRUE(SendOtaPackage(exchange, package, 1, progress));
  EXPECT_EQ(exchange.frames,
            (std::vector<Frame>{
                {1, 1476, 1, {}}, {2, 0, 2, block0}, {2, 1, 2, block1}, {3, Crc32Mpeg2(package), 1476, {}}}));
  EXPECT_EQ(progress, 2U);
  exchange.frames.clear();
  EXPECT_TRUE(SendOtaComponent(exchange, block1, 2, progress));
  EXPECT_EQ(exchange.frames.front(), (Frame{0x11, 452, 2, {}}));
  EXPECT_EQ(progress, 3U) << "a component adds to the previous progress";
}

// What the sensor does with the second block, how often the block is sent, and the result.
TEST(OtaTransfer, RetriesOnlyAfterLostReplies) {
  const struct {
    Exchanged<OtaReply> answer;
    int bad_answers, asked, outcome;
  } kCases[] = {{OtaReply{2, 255}, 99, 1, 255},  {tl::unexpected(9), 99, 1, 9},
                {tl::unexpected(-1), 99, 1, -1}, {tl::unexpected(-2), 1, 2, 0},
                {tl::unexpected(-3), 2, 3, 0},   {tl::unexpected(-2), 99, 3, -2},
                {OtaReply{1, 5}, 99, 3, -2}};  // answers another frame
  for (const auto& c : kCases) {
    SCOPED_TRACE(&c - kCases);
    ScriptedExchange exchange;
    int asked = 0;
    exchange.on_ota = [&](const Frame& frame) {
      const bool is_bad = frame.type == 2 && frame.first == 1 && asked++ < c.bad_answers;
      return is_bad ? c.answer : OtaReply{frame.type, 0};
    };
    std::atomic<std::uint32_t> progress{0};
    const Exchanged<void> sent = SendOtaPackage(exchange, Counting(3000), 0, progress);
    EXPECT_EQ(sent ? 0 : sent.error(), c.outcome);
    EXPECT_EQ(asked, c.asked);
    EXPECT_EQ(progress, sent ? 3U : 1U);
    EXPECT_EQ(exchange.frames.back().type, sent ? 3 : 2);
  }
}

}  // namespace
}  // namespace quarn::lidar
