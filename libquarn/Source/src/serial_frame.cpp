#include "libquarn/Source/src/serial_frame.h"

#include <algorithm>
#include <array>
#include <random>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

constexpr std::string_view kCommandTag = "$LDCMD,";
constexpr std::string_view kOtaTag = "$LDOTA,";
static_assert(kCommandTag.size() == kSerialTagSize && kOtaTag.size() == kSerialTagSize);

constexpr std::size_t kNonceSize = 4;
constexpr std::size_t kCrcSize = 4;
constexpr std::array<std::uint8_t, 2> kTrailer = {0xEE, 0xFF};
constexpr std::size_t kCrcAndTrailer = kCrcSize + kTrailer.size();
constexpr std::size_t kCrcUnit = 4;

// A reply without its body.
constexpr std::size_t kReplyFrameBytes = kSerialTagSize + kNonceSize + kCrcAndTrailer;
// The length byte and the command code, which the length byte of a reply does not count.
constexpr std::size_t kUncountedBody = 2;
static_assert(kReplyFrameBytes + kUncountedBody == kMinReplySize);

// The sensor's hardware computes the CRC over units of four bytes, with zeros padding the last one.
std::uint32_t PaddedCrc(std::span<const std::uint8_t> bytes) {
  constexpr std::array<std::uint8_t, kCrcUnit> kZeros{};
  const std::size_t missing = (kCrcUnit - bytes.size() % kCrcUnit) % kCrcUnit;
  return Crc32Mpeg2(std::span(kZeros).first(missing), Crc32Mpeg2(bytes));
}

std::vector<std::uint8_t> BeginFrame(std::string_view tag, std::size_t size) {
  std::vector<std::uint8_t> frame;
  frame.reserve(size);
  frame.assign(tag.begin(), tag.end());
  return frame;
}

template <typename Store>
void Append(std::vector<std::uint8_t>& frame, std::uint32_t value, Store store) {
  const std::size_t offset = frame.size();
  frame.resize(offset + sizeof(value));
  store(std::span<std::uint8_t>(frame), offset, value);
}

void AppendBig(std::vector<std::uint8_t>& frame, std::uint32_t value) {
  Append(frame, value, StoreBigEndian<std::uint32_t>);
}

void AppendLittle(std::vector<std::uint8_t>& frame, std::uint32_t value) {
  Append(frame, value, StoreLittleEndian<std::uint32_t>);
}

void AppendBytes(std::vector<std::uint8_t>& frame, std::span<const std::uint8_t> bytes) {
  frame.insert(frame.end(), bytes.begin(), bytes.end());
}

// The CRC covers everything between the tag and itself.
void EndFrame(std::vector<std::uint8_t>& frame, ReplyKind kind) {
  const std::uint32_t crc = PaddedCrc(std::span(frame).subspan(kSerialTagSize));
  kind == ReplyKind::kCommand ? AppendLittle(frame, crc) : AppendBig(frame, crc);
  AppendBytes(frame, kTrailer);
}

}  // namespace

std::string_view SerialTag(ReplyKind kind) {
  return kind == ReplyKind::kCommand ? kCommandTag : kOtaTag;
}

std::uint32_t FreshNonce() {
  std::random_device seed;
  return static_cast<std::uint32_t>(std::mt19937(seed())());
}

std::vector<std::uint8_t> EncodeCommandFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                             std::uint32_t nonce) {
  std::vector<std::uint8_t> frame = BeginFrame(kCommandTag, payload.size() + kMinReplySize);
  frame.push_back(static_cast<std::uint8_t>(payload.size() + 1));
  frame.push_back(code);
  AppendBytes(frame, payload);
  AppendLittle(frame, nonce);
  EndFrame(frame, ReplyKind::kCommand);
  return frame;
}

std::vector<std::uint8_t> EncodeOtaFrame(std::uint8_t type, std::uint32_t first, std::uint32_t second,
                                         std::span<const std::uint8_t> data) {
  constexpr std::size_t kAroundData = 29;
  std::vector<std::uint8_t> frame = BeginFrame(kOtaTag, data.size() + kAroundData);
  constexpr std::array<std::uint8_t, 3> kReserved{};
  AppendBytes(frame, kReserved);
  frame.push_back(type);
  AppendBig(frame, first);
  AppendBig(frame, second);
  AppendBig(frame, static_cast<std::uint32_t>(data.size()));
  AppendBytes(frame, data);
  EndFrame(frame, ReplyKind::kOta);
  return frame;
}

std::vector<std::uint8_t> EncodeReplyFrame(ReplyKind kind, std::uint8_t code,
                                           std::span<const std::uint8_t> rest, std::uint32_t nonce) {
  std::vector<std::uint8_t> frame = BeginFrame(SerialTag(kind), rest.size() + kMinReplySize);
  frame.push_back(static_cast<std::uint8_t>(rest.size()));
  frame.push_back(code);
  AppendBytes(frame, rest);
  kind == ReplyKind::kCommand ? AppendLittle(frame, nonce) : AppendBig(frame, nonce);
  EndFrame(frame, kind);
  return frame;
}

bool CheckReply(ReplyKind kind, std::span<const std::uint8_t> block) {
  if (block.size() < kMinReplySize || !EndsInTrailer(block)) {
    return false;
  }
  const std::size_t crc_offset = block.size() - kCrcAndTrailer;
  const std::uint32_t stored = kind == ReplyKind::kCommand
                                   ? LoadLittleEndian<std::uint32_t>(block, crc_offset)
                                   : LoadBigEndian<std::uint32_t>(block, crc_offset);
  if (stored != PaddedCrc(block.subspan(kSerialTagSize, crc_offset - kSerialTagSize))) {
    return false;
  }
  const std::span<const std::uint8_t> body = ReplyBody(block);
  return body[kBodyLength] + kUncountedBody == body.size();
}

bool EndsInTrailer(std::span<const std::uint8_t> block) {
  return block.size() >= kTrailer.size() &&
         std::equal(kTrailer.begin(), kTrailer.end(), block.last(kTrailer.size()).begin());
}

std::span<const std::uint8_t> ReplyBody(std::span<const std::uint8_t> block) {
  return block.subspan(kSerialTagSize, block.size() - kReplyFrameBytes);
}

}  // namespace quarn::lidar
