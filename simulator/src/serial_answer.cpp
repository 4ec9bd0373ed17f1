#include "simulator/src/serial_answer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Source/src/serial_frame.h"
#include "simulator/src/command_key.h"
#include "simulator/src/reply_frame.h"

namespace varkel::sim {
namespace {

using quarn::lidar::ReplyKind;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLengthByte = quarn::lidar::kSerialTagSize;
constexpr std::size_t kCrcFromEnd = 6;
constexpr std::size_t kCrcUnit = 4;

/// A frame with a wrong length byte and a CRC that matches it.
void Lie(Bytes& frame, ReplyKind kind, std::int64_t lie) {
  const std::int64_t length =
      std::clamp<std::int64_t>(frame[kLengthByte] + lie, 0, std::numeric_limits<std::uint8_t>::max());
  frame[kLengthByte] = static_cast<std::uint8_t>(length);
  const std::size_t crc_offset = frame.size() - kCrcFromEnd;
  constexpr std::array<std::uint8_t, kCrcUnit> kZeros{};
  const std::size_t counted = crc_offset - kLengthByte;
  const std::size_t missing = (kCrcUnit - counted % kCrcUnit) % kCrcUnit;
  const std::uint32_t crc =
      quarn::lidar::Crc32Mpeg2(std::span(kZeros).first(missing),
                               quarn::lidar::Crc32Mpeg2(std::span(frame).subspan(kLengthByte, counted)));
  if (kind == ReplyKind::kCommand) {
    quarn::lidar::StoreLittleEndian(frame, crc_offset, crc);
  } else {
    quarn::lidar::StoreBigEndian(frame, crc_offset, crc);
  }
}

}  // namespace

SerialAnswer AnswerSerialRequest(const SerialRequest& request, Carriage carriage, const SerialParts& parts) {
  parts.device.log.Add(request);
  if (parts.watcher) parts.watcher(request);
  SerialAnswer answer;
  const CommandKey key = KeyOfRequest(request);
  answer.plan = carriage == Carriage::kLine ? parts.faults.Next(key) : parts.faults.NextCarried(key);
  const ReplyPlan& plan = answer.plan;
  const SerialReply reply =
      plan.error ? SmallSensorHandler::Refuse(request, *plan.error) : parts.device.handler.Handle(request);
  Bytes frame = quarn::lidar::EncodeReplyFrame(reply.kind, plan.echo.value_or(reply.code), reply.contents,
                                               quarn::lidar::FreshNonce());
  if (plan.length_lie != 0) Lie(frame, reply.kind, plan.length_lie);
  answer.bytes = Noise(plan.noise_size);
  answer.bytes.insert(answer.bytes.end(), frame.begin(), frame.end());
  return answer;
}

}  // namespace varkel::sim
