#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>

#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"
#include "tests/quarn/bytes.h"
#include "tests/support/protocol_page.h"

namespace quarn::lidar {
namespace {

using test::Bytes;
using test::Counting;
using test::FromHex;
using test::PageTable;

std::vector<float> Floats(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<float>(in), {}};
}

TEST(KtcFrames, MatchTheProtocolPage) {
  Bytes frame = Counting(40);  // old contents must not remain
  for (const auto& row : PageTable(QUARN_PROTOCOL_PAGE, "| Version | Command | Payload | Frame |", 6)) {
    const KtcParser parser(static_cast<std::uint8_t>(std::stoi(row[0])));
    EXPECT_TRUE(parser.KtcStreamEncode(FromHex(row[2]), frame, FromHex(row[1])[0]));
    EXPECT_EQ(frame, FromHex(row[3])) << row[3];
  }
  EXPECT_FALSE(KtcParser(3).KtcStreamEncode({}, frame, 1));
}

// Version 1 extracts the payload and never reads outside the frame, version 2 checks the status.
TEST(KtcStreamDecode, Table) {
  const Ktc_1_0_parser v1;
  const Ktc_2_0_parser v2;
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  const struct {
    const GeneralKtcParser& parser;
    std::uint8_t status, byte;
    Bytes in;
    std::int32_t offset, length;
    bool ok;
    Bytes out;
  } kCases[] = {{v1, 0, 0, {1, 2, 3}, 1, 2, true, {2, 3}},   {v1, 0, 0, {1, 2, 3}, 1, 3, false, {0xEE}},
                {v1, 0, 0, {1, 2, 3}, -2, 4, true, {}},      {v1, 0, 0, {1, 2, 3}, 2, -2, true, {}},
                {v1, 0, 0, {1, 2, 3}, kMax, kMax, true, {}},  // the 32-bit sum wraps to -2
                {v2, 1, 0, {5, 6}, -1, 99, true, {5, 6}},    {v2, 2, 0, {}, -1, 99, true, {0xEE}},
                {v2, 8, 0, {5}, -1, 99, false, {5}},         {v2, 10, 7, {}, -1, 99, false, {0xEE, 7}},
                {v2, 10, 0, {}, -1, 99, true, {0xEE}},       {v2, 11, 1, {1}, -1, 99, true, {0xEE}}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(&c - kCases);
    Bytes out = {0xEE};
    EXPECT_EQ(c.parser.KtcStreamDecode(c.status, c.byte, c.in, c.offset, c.length, out), c.ok);
    EXPECT_EQ(out, c.out);
  }
}

TEST(KtcFilestream, NumbersAndSplitsPieces) {
  const Bytes file = Counting(2049);
  std::vector<Bytes> frames;
  ASSERT_TRUE(KtcParser(1).KtcFilestreamSend(file, 0x0A, frames));
  ASSERT_EQ(frames.size(), 3U);
  for (std::size_t k = 1; k <= 3; ++k) {
    const auto data = std::span(file).subspan(1024 * (k - 1)).first(k < 3 ? 1024 : 1);
    EXPECT_TRUE(std::ranges::equal(std::span(frames[k - 1]).subspan(8 + 16), data));
    const std::size_t fields[] = {16 + data.size(), 0, k, 3, Crc32Mpeg2(data)};
    for (std::size_t i = 0; i < std::size(fields); ++i) {
      EXPECT_EQ(LoadBigEndian<std::uint32_t>(frames[k - 1], 4 + 4 * i), fields[i]) << i;
    }
  }
  frames.clear();
  EXPECT_TRUE(KtcParser(2).KtcFilestreamSend(file, 0x0A, frames));
  EXPECT_TRUE(frames.empty());
  for (const auto& row : PageTable(QUARN_PROTOCOL_PAGE, "| Command | File | Frames |", 2)) {
    frames.clear();
    EXPECT_TRUE(Ktc_1_0_parser().KtcFilestreamSend(FromHex(row[1]), FromHex(row[0])[0], frames));
    frames.resize(1);
    EXPECT_EQ(frames[0], FromHex(row[2]));
  }
}

TEST(ChannelFov, MatchesTheProtocolPage) {
  for (const auto& row :
       PageTable(QUARN_PROTOCOL_PAGE, "| Channel | Start angles in degrees | Payload of command 22 |", 2)) {
    FovAngles starts{};
    std::ranges::copy(Floats(row[1]), starts.begin());
    EXPECT_EQ(EncodeChannelFov(static_cast<std::uint8_t>(std::stoi(row[0])), starts), FromHex(row[2]));
  }
  for (const auto& row : PageTable(QUARN_PROTOCOL_PAGE, "| Payload of the reply to 23 | Pairs read |", 4)) {
    const std::vector<float> pairs = Floats(row[1]);
    FovAngles angles[] = {{-1, -1, -1, -1, -1}, {-1, -1, -1, -1, -1}};  // starts and ends
    FovAngles expected[] = {angles[0], angles[1]};
    for (std::size_t i = 0; i < pairs.size(); ++i) expected[i % 2].at(i / 2) = pairs[i];
    EXPECT_EQ(DecodeMultiFov(FromHex(row[0]), angles[0], angles[1]), static_cast<int>(pairs.size() / 2));
    EXPECT_TRUE(std::ranges::equal(angles, expected)) << row[0];
  }
}

}  // namespace
}  // namespace quarn::lidar
