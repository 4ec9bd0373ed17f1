#include "simulator/src/serial_request.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {
namespace {

using quarn::lidar::LoadBigEndian;
using quarn::lidar::LoadLittleEndian;
using quarn::lidar::ReplyKind;
using quarn::lidar::SerialTag;
using ByteView = std::span<const std::uint8_t>;

constexpr std::array<ReplyKind, 2> kKinds = {ReplyKind::kCommand, ReplyKind::kOta};

// A command: length byte (of code and payload), code, payload, nonce, CRC, trailer.
constexpr std::size_t kCommandLength = 7;
constexpr std::size_t kCommandCode = 8;
constexpr std::size_t kCommandPayload = 9;
constexpr std::size_t kAroundCounted = 18;
constexpr std::size_t kNonceFromEnd = 10;
constexpr std::size_t kAroundPayload = 19;
// A firmware frame.
constexpr std::size_t kOtaType = 10;
constexpr std::size_t kOtaFirst = 11;
constexpr std::size_t kOtaSecond = 15;
constexpr std::size_t kOtaLength = 19;
constexpr std::size_t kOtaData = 23;
constexpr std::size_t kAroundData = 29;

enum class Beginning { kNone, kPartOfTag, kTag };

Beginning CompareTag(ByteView bytes, ReplyKind kind) {
  const std::string_view tag = SerialTag(kind);
  const std::size_t size = std::min(bytes.size(), tag.size());
  if (!std::equal(tag.begin(), tag.begin() + static_cast<std::ptrdiff_t>(size), bytes.begin())) {
    return Beginning::kNone;
  }
  return size == tag.size() ? Beginning::kTag : Beginning::kPartOfTag;
}

struct FrameStart {
  std::size_t position = 0;
  std::optional<ReplyKind> kind;  ///< nullopt until the tag is complete
};

/// The first tag, or the position where one may begin.
FrameStart FindStart(ByteView bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const ReplyKind kind : kKinds) {
      const Beginning beginning = CompareTag(bytes.subspan(i), kind);
      if (beginning == Beginning::kTag) return {i, kind};
      if (beginning == Beginning::kPartOfTag) return {i, std::nullopt};
    }
  }
  return {bytes.size(), std::nullopt};
}

/// The frame's announced length; nullopt until that is known.
std::optional<std::size_t> ClaimedSize(ByteView bytes, ReplyKind kind) {
  if (kind == ReplyKind::kCommand) {
    if (bytes.size() <= kCommandLength) return std::nullopt;
    return bytes[kCommandLength] + kAroundCounted;
  }
  if (bytes.size() < kOtaData) return std::nullopt;
  return std::size_t{LoadBigEndian<std::uint32_t>(bytes, kOtaLength)} + kAroundData;
}

/// A frame is valid if the tool's encoder produces the same bytes from its fields.
bool Equals(ByteView frame, const std::vector<std::uint8_t>& expected) {
  return std::equal(frame.begin(), frame.end(), expected.begin(), expected.end());
}

std::optional<SerialRequest> ParseCommand(ByteView frame) {
  if (frame.size() < kAroundPayload) return std::nullopt;
  const ByteView payload = frame.subspan(kCommandPayload, frame.size() - kAroundPayload);
  const auto nonce = LoadLittleEndian<std::uint32_t>(frame, frame.size() - kNonceFromEnd);
  const std::uint8_t code = frame[kCommandCode];
  if (!Equals(frame, quarn::lidar::EncodeCommandFrame(code, payload, nonce))) return std::nullopt;
  return SerialRequest{ReplyKind::kCommand, code, {payload.begin(), payload.end()}, 0, 0};
}

std::optional<SerialRequest> ParseOta(ByteView frame) {
  if (frame.size() < kAroundData) return std::nullopt;
  const ByteView data = frame.subspan(kOtaData, frame.size() - kAroundData);
  const std::uint8_t type = frame[kOtaType];
  const auto first = LoadBigEndian<std::uint32_t>(frame, kOtaFirst);
  const auto second = LoadBigEndian<std::uint32_t>(frame, kOtaSecond);
  if (!Equals(frame, quarn::lidar::EncodeOtaFrame(type, first, second, data))) return std::nullopt;
  return SerialRequest{ReplyKind::kOta, type, {data.begin(), data.end()}, first, second};
}

}  // namespace

std::optional<SerialRequest> ParseSerialRequest(ByteView frame) {
  const FrameStart start = FindStart(frame);
  if (start.position != 0 || !start.kind) return std::nullopt;
  return *start.kind == ReplyKind::kCommand ? ParseCommand(frame) : ParseOta(frame);
}

void SerialRequestReader::Append(ByteView bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::optional<SerialRequest> SerialRequestReader::Next() {
  for (;;) {
    const FrameStart start = FindStart(bytes_);
    Drop(start.position);
    if (!start.kind) return std::nullopt;
    const auto size = ClaimedSize(bytes_, *start.kind);
    if (!size) return std::nullopt;
    const bool is_credible = *size <= kMaxData + kAroundData;
    if (is_credible && bytes_.size() < *size) return std::nullopt;
    auto request = is_credible ? ParseSerialRequest(ByteView(bytes_).first(*size)) : std::nullopt;
    // After a truncated frame the next one may be within its announced length.
    Drop(request ? *size : 1);
    if (request) return request;
  }
}

void SerialRequestReader::Drop(std::size_t count) {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace varkel::sim
