#include "simulator/src/frame_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace varkel::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes kNoise = {0x00, 0x47, 0x47, 0x75, 0x57, 0x74, 0xFF, 0x57};
const Bytes kVersion1 = {0x47, 0x74, 0x21, 0x00, 0x00, 0x00, 0x00, 0x03, 0x47, 0x74, 0x07};
const Bytes kVersion2 = {0x57, 0x75, 0x01, 0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

Bytes Stream() {
  Bytes bytes;
  for (const Bytes* part : {&kNoise, &kVersion1, &kVersion2, &kNoise, &kVersion1}) {
    bytes.insert(bytes.end(), part->begin(), part->end());
  }
  return bytes;
}

std::string Describe(FrameReader& reader) {
  std::string text;
  while (const auto request = reader.Next()) {
    text += "v" + std::to_string(request->version) + " c" + std::to_string(request->command) + " n" +
            std::to_string(request->payload.size()) + ";";
  }
  return text;
}

constexpr char kRequests[] = "v1 c33 n3;v2 c7 n0;v1 c33 n3;";

// Noise, frames of both versions and a payload that looks like a header, cut in two at every place.
TEST(FrameReader, FindsTheRequestsAtEverySplit) {
  const Bytes stream = Stream();
  for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
    FrameReader reader;
    reader.Append(std::span(stream).first(cut));
    std::string found = Describe(reader);
    reader.Append(std::span(stream).subspan(cut));
    found += Describe(reader);
    EXPECT_EQ(found, kRequests) << "cut at " << cut;
  }
}

TEST(FrameReader, FindsTheRequestsByteByByte) {
  FrameReader reader;
  std::string found;
  for (const std::uint8_t byte : Stream()) {
    reader.Append({&byte, 1});
    found += Describe(reader);
  }
  EXPECT_EQ(found, kRequests);
}

TEST(FrameReader, YieldsThePayload) {
  FrameReader reader;
  reader.Append(kVersion1);
  EXPECT_EQ(reader.Next()->payload, Bytes({0x47, 0x74, 0x07}));
}

TEST(FrameReader, RefusesAnAbsurdLengthAndTakesNothingBehindIt) {
  FrameReader reader;
  reader.Append(Bytes{0x47, 0x74, 0x21, 0x00, 0xFF, 0xFF, 0xFF, 0xFF});
  EXPECT_FALSE(reader.Next());
  ASSERT_TRUE(reader.refused());
  EXPECT_EQ(reader.refused()->command, 0x21);
  reader.Append(kVersion1);
  EXPECT_FALSE(reader.Next());
}

TEST(FrameReader, TakesTheLongestPayload) {
  FrameReader reader;
  reader.Append(Bytes{0x47, 0x74, 0x21, 0x00, 0x00, 0x10, 0x00, 0x00});
  EXPECT_FALSE(reader.Next());
  EXPECT_FALSE(reader.refused());
  reader.Append(Bytes(FrameReader::kMaxPayload, 0x47));
  const auto request = reader.Next();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->payload.size(), FrameReader::kMaxPayload);
}

}  // namespace
}  // namespace varkel::sim
