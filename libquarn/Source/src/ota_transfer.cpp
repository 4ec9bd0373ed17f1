#include "libquarn/Source/src/ota_transfer.h"

#include <algorithm>
#include <limits>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {
namespace {

constexpr int kRetries = 2;

struct OtaFrame {
  std::uint8_t type;
  std::uint32_t first;
  std::uint32_t second;
  std::span<const std::uint8_t> data;
};

bool IsRetryable(const Exchanged<void>& result) {
  return !result &&
         (result.error() == SerialExchange::kWrongReply || result.error() == SerialExchange::kNotReceived);
}

// One attempt; fails with the sensor's status or the exchange's code.
Exchanged<void> TryFrame(SerialExchange& exchange, const OtaFrame& frame) {
  const Exchanged<OtaReply> reply = exchange.ExchangeOta(frame.first, frame.second, frame.data, frame.type);
  if (!reply) {
    return tl::unexpected(reply.error());
  }
  // A late reply to an earlier frame does not acknowledge this one.
  if (reply->command != frame.type) {
    return tl::unexpected(SerialExchange::kWrongReply);
  }
  if (reply->status != 0) {
    return tl::unexpected(std::int32_t{reply->status});
  }
  return {};
}

Exchanged<void> SendFrame(SerialExchange& exchange, const OtaFrame& frame) {
  Exchanged<void> result = TryFrame(exchange, frame);
  for (int retry = 0; retry < kRetries && IsRetryable(result); ++retry) {
    result = TryFrame(exchange, frame);
  }
  return result;
}

Exchanged<void> Transfer(SerialExchange& exchange, std::span<const std::uint8_t> bytes, std::uint32_t purpose,
                         const OtaFrameTypes& types, std::atomic<std::uint32_t>& progress) {
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    return tl::unexpected(SerialExchange::kNotSent);
  }
  const auto size = static_cast<std::uint32_t>(bytes.size());
  const auto blocks = static_cast<std::uint32_t>(OtaBlocks(bytes.size()));
  Exchanged<void> result = SendFrame(exchange, {types.start, size, purpose, {}});
  for (std::uint32_t block = 0; block < blocks && result; ++block) {
    const std::span<const std::uint8_t> rest = bytes.subspan(std::size_t{block} * kOtaBlockSize);
    result =
        SendFrame(exchange, {types.data, block, blocks, rest.first(std::min(rest.size(), kOtaBlockSize))});
    if (result) {
      ++progress;
    }
  }
  return result ? SendFrame(exchange, {types.end, Crc32Mpeg2(bytes), size, {}}) : result;
}

}  // namespace

Exchanged<void> SendOtaPackage(SerialExchange& exchange, std::span<const std::uint8_t> package,
                               std::uint32_t mode, std::atomic<std::uint32_t>& progress) {
  progress = 0;
  return Transfer(exchange, package, mode, kPackageFrames, progress);
}

Exchanged<void> SendOtaComponent(SerialExchange& exchange, std::span<const std::uint8_t> component,
                                 std::uint8_t type, std::atomic<std::uint32_t>& progress) {
  return Transfer(exchange, component, type, kComponentFrames, progress);
}

Exchanged<Partition> ChangeMode(SerialExchange& exchange, std::uint8_t mode) {
  return SetItem(exchange, kModeItem, mode).map([](std::uint8_t partition) {
    return partition == 0 ? Partition::kA : Partition::kB;
  });
}

}  // namespace quarn::lidar
