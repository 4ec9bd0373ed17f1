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
  EXPECT_EQ(SendOtaPackage(exchange, package, 1, progress), 0);
  EXPECT_EQ(exchange.frames,
            (std::vector<Frame>{
                {1, 1476, 1, {}}, {2, 0, 2, block0}, {2, 1, 2, block1}, {3, Crc32Mpeg2(package), 1476, {}}}));
  EXPECT_EQ(progress, 2U);
  exchange.frames.clear();
  EXPECT_EQ(SendOtaComponent(exchange, block1, 2, progress), 0);
  EXPECT_EQ(exchange.frames.front(), (Frame{0x11, 452, 2, {}}));
  EXPECT_EQ(progress, 3U) << "a component adds to the previous progress";
}

// What the sensor does with the second block, how often the block is sent, and the result.
TEST(OtaTransfer, RetriesOnlyAfterLostReplies) {
  const struct {
    int result;
    OtaReply reply;
    int bad_answers, asked, outcome;
  } kCases[] = {
      {0, {2, 255}, 99, 1, 255}, {9, {}, 99, 1, 9},   {-1, {}, 99, 1, -1},    {-2, {}, 1, 2, 0},
      {-3, {}, 2, 3, 0},         {-2, {}, 99, 3, -2}, {0, {1, 5}, 99, 3, -2},  // answers another frame
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(&c - kCases);
    ScriptedExchange exchange;
    int asked = 0;
    exchange.on_ota = [&](const Frame& frame, OtaReply& reply) {
      if (frame.type != 2 || frame.first != 1 || asked++ >= c.bad_answers) return 0;
      reply = c.reply;
      return c.result;
    };
    std::atomic<std::uint32_t> progress{0};
    EXPECT_EQ(SendOtaPackage(exchange, Counting(3000), 0, progress), c.outcome);
    EXPECT_EQ(asked, c.asked);
    EXPECT_EQ(progress, c.outcome == 0 ? 3U : 1U);
    EXPECT_EQ(exchange.frames.back().type, c.outcome == 0 ? 3 : 2);
  }
}

}  // namespace
}  // namespace quarn::lidar
