#include "simulator/src/frame_reader.h"

#include <array>

#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"
#include "simulator/src/reply_frame.h"

namespace varkel::sim {
namespace {

constexpr std::array<std::uint8_t, 2> kVersions = {1, 2};

struct FrameStart {
  std::size_t position = 0;
  std::uint8_t version = 0;  ///< 0: no identifier pair
};

/// The first identifier pair, or a last byte that may be the beginning of one.
FrameStart FindStart(std::span<const std::uint8_t> bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const std::uint8_t version : kVersions) {
      const auto& parser = ParserOf(version);
      if (bytes[i] != parser.GetHeaderIdentifier0()) continue;
      if (i + 1 == bytes.size()) return {i, 0};
      if (bytes[i + 1] == parser.GetHeaderIdentifier1()) return {i, version};
    }
  }
  return {bytes.size(), 0};
}

}  // namespace

void FrameReader::Append(std::span<const std::uint8_t> bytes) {
  if (!refused_) bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::optional<ReceivedRequest> FrameReader::Next() {
  const FrameStart start = FindStart(bytes_);
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(start.position));
  if (start.version == 0) return std::nullopt;

  const quarn::lidar::KtcLayout& layout = ParserOf(start.version).layout();
  if (bytes_.size() < layout.header_size) return std::nullopt;
  ReceivedRequest request{start.version, bytes_[layout.cmd], {}};
  const auto length = quarn::lidar::LoadBigEndian<std::uint32_t>(bytes_, layout.payload_length);
  if (length > kMaxPayload) {
    refused_ = request;
    bytes_.clear();
    return std::nullopt;
  }
  const std::size_t frame_size = layout.header_size + length;
  if (bytes_.size() < frame_size) return std::nullopt;
  const auto header_end = bytes_.begin() + static_cast<std::ptrdiff_t>(layout.header_size);
  const auto frame_end = bytes_.begin() + static_cast<std::ptrdiff_t>(frame_size);
  request.payload.assign(header_end, frame_end);
  bytes_.erase(bytes_.begin(), frame_end);
  return request;
}

}  // namespace varkel::sim
