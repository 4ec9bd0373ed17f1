#include "simulator/src/ota_store.h"

#include <algorithm>
#include <utility>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Source/src/ota_transfer.h"

namespace varkel::sim {
namespace {

using quarn::lidar::kComponentFrames;
using quarn::lidar::kOtaBlockSize;
using quarn::lidar::kPackageFrames;
using quarn::lidar::OtaBlocks;

constexpr std::uint32_t kLastMode = 1;
constexpr std::uint32_t kLastComponentType = 3;

bool IsComponentFrame(std::uint8_t type) {
  return type == kComponentFrames.start || type == kComponentFrames.data || type == kComponentFrames.end;
}

}  // namespace

OtaStatus OtaStore::Receive(const SerialRequest& frame, std::optional<ReceivedFirmware>& completed) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const bool is_component = IsComponentFrame(frame.code);
  const auto& types = is_component ? kComponentFrames : kPackageFrames;
  OtaStatus status = kOtaUnknownFrame;
  if (frame.code == types.start) {
    status = Begin(frame, is_component);
  } else if (frame.code == types.data || frame.code == types.end) {
    const bool is_under_way = transfer_ && transfer_->firmware.is_component == is_component;
    if (!is_under_way) {
      status = kOtaWrongOrder;
    } else {
      status = frame.code == types.data ? TakeBlock(frame) : End(frame, completed);
    }
  }
  if (status != kOtaTaken) transfer_.reset();
  return status;
}

OtaStatus OtaStore::Begin(const SerialRequest& frame, bool is_component) {
  if (!frame.payload.empty()) return kOtaBadBlockSize;
  if (frame.first == 0 || frame.first > kMostBytes) return kOtaBadLength;
  if (frame.second > (is_component ? kLastComponentType : kLastMode)) return kOtaBadPurpose;
  transfer_ = Transfer{{is_component, frame.second, {}}, frame.first, 0, false};
  return kOtaTaken;
}

OtaStatus OtaStore::TakeBlock(const SerialRequest& frame) {
  Transfer& transfer = *transfer_;
  std::vector<std::uint8_t>& bytes = transfer.firmware.bytes;
  if (transfer.is_complete) return kOtaWrongOrder;
  if (frame.second != OtaBlocks(transfer.length)) return kOtaBadCount;
  if (transfer.next_block > 0 && frame.first == transfer.next_block - 1) {
    const bool is_same = frame.payload.size() <= bytes.size() &&
                         std::equal(frame.payload.rbegin(), frame.payload.rend(), bytes.rbegin());
    return is_same ? kOtaTaken : kOtaBadBlock;
  }
  if (frame.first != transfer.next_block) return kOtaBadBlock;
  const std::size_t missing = transfer.length - bytes.size();
  if (frame.payload.empty() || frame.payload.size() != std::min(missing, kOtaBlockSize)) {
    return kOtaBadBlockSize;
  }
  bytes.insert(bytes.end(), frame.payload.begin(), frame.payload.end());
  ++transfer.next_block;
  return kOtaTaken;
}

OtaStatus OtaStore::End(const SerialRequest& frame, std::optional<ReceivedFirmware>& completed) {
  Transfer& transfer = *transfer_;
  const std::vector<std::uint8_t>& bytes = transfer.firmware.bytes;
  if (!frame.payload.empty()) return kOtaBadBlockSize;
  if (frame.second != transfer.length) return kOtaBadLength;
  if (bytes.size() != transfer.length) return kOtaWrongOrder;
  if (frame.first != quarn::lidar::Crc32Mpeg2(bytes)) return kOtaBadChecksum;
  if (!std::exchange(transfer.is_complete, true)) {
    received_.push_back(transfer.firmware);
    completed = transfer.firmware;
  }
  return kOtaTaken;
}

std::vector<ReceivedFirmware> OtaStore::Received() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return received_;
}

void OtaStore::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  received_.clear();
}

}  // namespace varkel::sim
