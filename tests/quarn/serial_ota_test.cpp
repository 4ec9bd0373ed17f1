#include <gtest/gtest.h>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/ota_transfer.h"
#include "tests/support/scripted_exchange.h"

namespace quarn::lidar {
namespace {

using test::ScriptedExchange;
using Bytes = ScriptedExchange::Bytes;
using Frame = ScriptedExchange::OtaFrame;

Bytes Counting(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
  return bytes;
}

TEST(OtaTransfer, SendsStartBlocksAndEnd) {
  const Bytes package = Counting(2500);
  const auto block = [&](std::size_t begin, std::size_t end) {
    return Bytes(package.begin() + static_cast<std::ptrdiff_t>(begin),
                 package.begin() + static_cast<std::ptrdiff_t>(end));
  };
  const std::uint32_t crc = Crc32Mpeg2(package);
  std::atomic<std::uint32_t> progress{99};
  ScriptedExchange exchange;
  EXPECT_EQ(SendOtaPackage(exchange, package, 1, progress), 0);
  EXPECT_EQ(exchange.frames, (std::vector<Frame>{{1, 2500, 1, {}},
                                                 {2, 0, 3, block(0, 1024)},
                                                 {2, 1, 3, block(1024, 2048)},
                                                 {2, 2, 3, block(2048, 2500)},
                                                 {3, crc, 2500, {}}}));
  EXPECT_EQ(progress, 3U);

  ScriptedExchange component;
  progress = 10;
  EXPECT_EQ(SendOtaComponent(component, Counting(1024), 2, progress), 0);
  EXPECT_EQ(component.frames, (std::vector<Frame>{{0x11, 1024, 2, {}},
                                                  {0x12, 0, 1, Counting(1024)},
                                                  {0x13, Crc32Mpeg2(Counting(1024)), 1024, {}}}));
  EXPECT_EQ(progress, 11U);

  ScriptedExchange empty;
  EXPECT_EQ(SendOtaPackage(empty, {}, 0, progress), 0);
  EXPECT_EQ(empty.frames, (std::vector<Frame>{{1, 0, 0, {}}, {3, 0xFFFFFFFF, 0, {}}}));
}

// What the sensor does with the second block, how often it is asked, and what comes of it.
TEST(OtaTransfer, AsksAgainForLostRepliesOnly) {
  struct Case {
    const char* name;
    int result;
    OtaReply reply;
    int bad_answers;
    int asked;
    int outcome;
  };
  const std::vector<Case> cases = {
      {"status", 0, {2, 7}, 99, 1, 7},
      {"highest status", 0, {2, 255}, 99, 1, 255},
      {"refused by the carrier", 9, {}, 99, 1, 9},
      {"closed", -1, {}, 99, 1, -1},
      {"one wrong reply", -2, {}, 1, 2, 0},
      {"two lost replies", -3, {}, 2, 3, 0},
      {"silent", -2, {}, 99, 3, -2},
      {"answers another frame", 0, {1, 0}, 99, 3, -2},
      {"answers another frame once", 0, {1, 5}, 1, 2, 0},
  };
  for (const Case& c : cases) {
    ScriptedExchange exchange;
    int asked = 0;
    exchange.on_ota = [&](const Frame& frame, OtaReply& reply) {
      if (frame.type != 2 || frame.first != 1 || asked++ >= c.bad_answers) return 0;
      reply = c.reply;
      return c.result;
    };
    std::atomic<std::uint32_t> progress{0};
    EXPECT_EQ(SendOtaPackage(exchange, Counting(3000), 0, progress), c.outcome) << c.name;
    EXPECT_EQ(asked, c.asked) << c.name;
    EXPECT_EQ(progress, c.outcome == 0 ? 3U : 1U) << c.name;
    EXPECT_EQ(exchange.frames.back().type, c.outcome == 0 ? 3 : 2) << c.name;
  }
}

TEST(OtaTransfer, ChangeModeTellsThePartition) {
  struct Case {
    Bytes contents;  // what stands behind the command code
    int result;
    Partition partition;
  };
  const std::vector<Case> cases = {
      {{12, 0, 0}, 0, Partition::kA},     {{12, 0, 1}, 0, Partition::kB},  {{12, 0, 2}, 0, Partition::kB},
      {{12, 0, 1, 0}, -2, Partition::kA}, {{11, 0, 1}, -2, Partition::kA}, {{12, 0}, -2, Partition::kA},
  };
  for (const Case& c : cases) {
    ScriptedExchange exchange;
    exchange.on_command = [&](const ScriptedExchange::Command&, Bytes& contents) {
      contents = c.contents;
      return 0;
    };
    Partition partition = Partition::kA;
    EXPECT_EQ(ChangeMode(exchange, 4, partition), c.result);
    EXPECT_EQ(partition, c.partition);
    EXPECT_EQ(exchange.commands.front(), (ScriptedExchange::Command{3, {12, 4}}));
  }
  ScriptedExchange broken;
  Partition partition = Partition::kB;
  EXPECT_EQ(ChangeMode(broken, 4, partition), -3);
}

}  // namespace
}  // namespace quarn::lidar
