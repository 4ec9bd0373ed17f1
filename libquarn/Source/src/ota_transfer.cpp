#include "libquarn/Source/src/ota_transfer.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {
namespace {

constexpr int kAttempts = 3;

bool IsRetryable(int result) {
  return result == SerialExchange::kWrongReply || result == SerialExchange::kNotReceived;
}

// The sensor's status, 0 when it takes more, or the exchange's code.
int SendFrame(SerialExchange& exchange, std::uint8_t type, std::uint32_t first, std::uint32_t second,
              std::span<const std::uint8_t> data = {}) {
  int result = SerialExchange::kWrongReply;
  for (int attempt = 0; attempt < kAttempts && IsRetryable(result); ++attempt) {
    OtaReply reply;
    result = exchange.ExchangeOta(first, second, data, type, reply);
    if (result == 0) {
      // A late reply to an earlier frame says nothing about this one.
      result = reply.command == type ? reply.status : SerialExchange::kWrongReply;
    }
  }
  return result;
}

int Transfer(SerialExchange& exchange, std::span<const std::uint8_t> bytes, std::uint32_t purpose,
             const OtaFrameTypes& types, std::atomic<std::uint32_t>& progress) {
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    return SerialExchange::kNotSent;
  }
  const auto size = static_cast<std::uint32_t>(bytes.size());
  const auto blocks = static_cast<std::uint32_t>(OtaBlocks(bytes.size()));
  int result = SendFrame(exchange, types.start, size, purpose);
  for (std::uint32_t block = 0; block < blocks && result == 0; ++block) {
    const std::span<const std::uint8_t> rest = bytes.subspan(std::size_t{block} * kOtaBlockSize);
    result = SendFrame(exchange, types.data, block, blocks, rest.first(std::min(rest.size(), kOtaBlockSize)));
    if (result == 0) {
      ++progress;
    }
  }
  return result == 0 ? SendFrame(exchange, types.end, Crc32Mpeg2(bytes), size) : result;
}

}  // namespace

int SendOtaPackage(SerialExchange& exchange, std::span<const std::uint8_t> package, std::uint32_t mode,
                   std::atomic<std::uint32_t>& progress) {
  progress = 0;
  return Transfer(exchange, package, mode, kPackageFrames, progress);
}

int SendOtaComponent(SerialExchange& exchange, std::span<const std::uint8_t> component, std::uint8_t type,
                     std::atomic<std::uint32_t>& progress) {
  return Transfer(exchange, component, type, kComponentFrames, progress);
}

int ChangeMode(SerialExchange& exchange, std::uint8_t mode, Partition& partition) {
  std::uint8_t value = 0;
  const int result = SetItem(exchange, kModeItem, mode, value);
  if (result == 0) {
    partition = value == 0 ? Partition::kA : Partition::kB;
  }
  return result;
}

}  // namespace quarn::lidar
