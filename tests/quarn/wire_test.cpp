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

auto Table(const std::string& heading, std::size_t rows) {
  auto table = test::PageTable(QUARN_PROTOCOL_PAGE, heading);
  EXPECT_EQ(table.size(), rows);
  return table;
}

std::vector<float> Floats(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<float>(in), {}};
}

TEST(KtcFrames, MatchTheProtocolPage) {
  for (const auto& row : Table("| Version | Command | Payload | Frame |", 6)) {
    const KtcParser parser(static_cast<std::uint8_t>(std::stoi(row[0])));
    Bytes frame = Counting(40);  // what was there before must not remain
    EXPECT_TRUE(parser.KtcStreamEncode(FromHex(row[2]), frame, FromHex(row[1])[0]));
    EXPECT_EQ(frame, FromHex(row[3])) << row[3];
  }
}

TEST(KtcFrames, KnowTheirVersionsAndCarryLongPayloads) {
  for (const std::uint8_t version : Bytes{1, 2}) {
    const KtcParser parser(version);
    Bytes frame;
    parser.KtcStreamEncode(Counting(300), frame, 0x40);
    const std::size_t header = parser.parser()->GetHeaderSize();
    ASSERT_EQ(frame.size(), header + 300);
    EXPECT_EQ(parser.parser()->GetHeaderIdentifier0(), frame[0]);
    EXPECT_EQ(parser.parser()->GetHeaderIdentifier1(), frame[1]);
    EXPECT_EQ(LoadBigEndian<std::uint32_t>(frame, header - 4), 300U);
  }
  Bytes out;
  EXPECT_EQ(KtcParser(3).parser(), nullptr);
  EXPECT_FALSE(KtcParser(3).KtcStreamEncode({}, out, 1));
}

TEST(KtcStreamDecode, Version1NeverReadsOutside) {
  const Bytes in = Counting(10);
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  const struct {
    std::int32_t offset, length;
    bool ok;
    Bytes out;
  } kCases[] = {{2, 3, true, {in[2], in[3], in[4]}},
                {10, 0, true, {}},
                {8, 4, false, {0xEE}},
                {kMax, 0, false, {0xEE}},
                {-2, 4, true, {}},
                {4, -2, true, {}},
                {kMax, kMax, true, {}}};  // the 32-bit sum wraps to -2
  for (const auto& c : kCases) {
    Bytes out = {0xEE};
    EXPECT_EQ(Ktc_1_0_parser().KtcStreamDecode(0, 0, in, c.offset, c.length, out), c.ok);
    EXPECT_EQ(out, c.out) << c.offset << " " << c.length;
  }
}

TEST(KtcStreamDecode, Version2ActsOnTheStatus) {
  const struct {
    Bytes in, out;
    std::uint8_t status, byte;
    bool ok;
  } kCases[] = {{{5, 6}, {5, 6}, 1, 0, true},  {{}, {0xEE}, 2, 0, true},       {{5}, {5}, 8, 0, false},
                {{}, {0xEE, 7}, 10, 7, false}, {{1}, {0xEE, 0}, 10, 0, false}, {{1}, {0xEE}, 11, 1, true}};
  for (const auto& c : kCases) {
    Bytes out = {0xEE};
    EXPECT_EQ(Ktc_2_0_parser().KtcStreamDecode(c.status, c.byte, c.in, -1, 99, out), c.ok) << int{c.status};
    EXPECT_EQ(out, c.out) << int{c.status};
  }
}

TEST(KtcFilestream, NumbersAndCutsPieces) {
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
  EXPECT_TRUE(KtcParser(1).KtcFilestreamSend(Bytes(1024), 0x0A, frames));
  EXPECT_EQ(frames.size(), 1U);
  for (const auto& row : Table("| Command | File | Frames |", 2)) {
    frames.clear();
    EXPECT_TRUE(Ktc_1_0_parser().KtcFilestreamSend(FromHex(row[1]), FromHex(row[0])[0], frames));
    frames.resize(1);
    EXPECT_EQ(frames[0], FromHex(row[2]));
  }
}

// In one piece, in two, and byte by byte.
TEST(Crc32Mpeg2, CheckValueAndPieces) {
  const std::string digits = "123456789";
  EXPECT_EQ(Crc32Mpeg2(Bytes(digits.begin(), digits.end())), 0x0376E6E7U);
  const Bytes bytes = Counting(100);
  std::uint32_t crc = Crc32Mpeg2({});
  EXPECT_EQ(crc, 0xFFFFFFFFU);
  for (std::size_t size = 1; size <= bytes.size(); ++size) {
    const auto part = std::span(bytes).first(size);
    crc = Crc32Mpeg2(part.last(1), crc);
    ASSERT_EQ(Crc32Mpeg2(part), crc) << size;
    ASSERT_EQ(Crc32Mpeg2(part.subspan(size / 3), Crc32Mpeg2(part.first(size / 3))), crc) << size;
  }
}

TEST(ChannelFov, MatchesTheProtocolPage) {
  for (const auto& row : Table("| Channel | Start angles in degrees | Payload of command 22 |", 2)) {
    FovAngles starts{};
    std::ranges::copy(Floats(row[1]), starts.begin());
    EXPECT_EQ(EncodeChannelFov(static_cast<std::uint8_t>(std::stoi(row[0])), starts), FromHex(row[2]));
  }
  for (const auto& row : Table("| Payload of the reply to 23 | Pairs read |", 4)) {
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
