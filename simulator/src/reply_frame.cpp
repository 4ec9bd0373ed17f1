#include "simulator/src/reply_frame.h"

#include <algorithm>
#include <limits>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {

const quarn::lidar::GeneralKtcParser& ParserOf(std::uint8_t version) {
  static const quarn::lidar::Ktc_1_0_parser kVersion1;
  static const quarn::lidar::Ktc_2_0_parser kVersion2;
  if (version == 2) return kVersion2;
  return kVersion1;
}

std::vector<std::uint8_t> ReplyFrame(std::uint8_t version, std::uint8_t command, const Reply& reply,
                                     std::int64_t length_lie) {
  const auto& parser = ParserOf(version);
  std::vector<std::uint8_t> frame;
  parser.KtcStreamEncode(reply.payload, frame, command);
  frame[parser.layout().return_code] = reply.return_code;
  const std::int64_t announced =
      std::clamp<std::int64_t>(static_cast<std::int64_t>(reply.payload.size()) + length_lie, 0,
                               std::numeric_limits<std::uint32_t>::max());
  quarn::lidar::StoreBigEndian(frame, parser.layout().payload_length, static_cast<std::uint32_t>(announced));
  return frame;
}

std::vector<std::uint8_t> Noise(std::size_t size) {
  constexpr std::uint8_t kFirst = 0xA0;  // far from the letters that begin a frame
  std::vector<std::uint8_t> noise(size);
  for (std::size_t i = 0; i < size; ++i) noise[i] = static_cast<std::uint8_t>(kFirst + i % 16);
  return noise;
}

}  // namespace varkel::sim
