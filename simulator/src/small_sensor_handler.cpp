#include "simulator/src/small_sensor_handler.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "libquarn/Source/src/ota_transfer.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "simulator/src/firmware_version.h"

namespace varkel::sim {
namespace {

using namespace quarn::lidar;  // for the items

// Reasons for a refusal.
constexpr std::uint8_t kUnknownItem = 1;
constexpr std::uint8_t kBadRequest = 2;
constexpr std::uint8_t kBadValue = 3;

constexpr std::size_t kValueOffset = 1;  // in a set's payload
constexpr std::size_t kSetSize = 2;
constexpr std::size_t kSerialNumberSize = 24;
constexpr std::size_t kVersionRequest = 27;
constexpr std::size_t kVersionSize = 24;
constexpr std::uint8_t kSafetyMark = 0xA1;
constexpr std::uint8_t kReadyForFirmware = 4;
constexpr std::array<std::uint8_t, 6> kAngularRanges = {0, 1, 2, 3, 4, 8};
constexpr std::uint8_t kLastAccelRange = 3;

constexpr std::uint32_t kPblMode = 1;
enum ComponentType : std::uint32_t { kTmbFpgaType = 0, kBmbFpgaType = 1, kApplicationType = 2 };

std::uint8_t ItemOf(const SerialRequest& request) {
  return request.payload.empty() ? 0 : request.payload.front();
}

SerialReply Answer(const SerialRequest& request, std::vector<std::uint8_t> contents) {
  return {request.kind, request.code, std::move(contents)};
}

/// The reply to a set: the last byte is its status, or the item's answer.
SerialReply SetAnswer(const SerialRequest& request, std::uint8_t value) {
  return Answer(request, {ItemOf(request), 0, value});
}

/// NUL padded; a longer text is truncated.
void AppendText(std::vector<std::uint8_t>& contents, std::string text, std::size_t size) {
  text.resize(size);
  contents.insert(contents.end(), text.begin(), text.end());
}

SerialReply Correction(const SerialRequest& request, const std::vector<std::uint8_t>& correction) {
  const std::size_t size = std::min(correction.size(), SmallSensorItems::kMostCorrection);
  std::vector<std::uint8_t> contents = {kCorrectionItem, 0, static_cast<std::uint8_t>(size)};
  std::uint8_t sum = 0;
  for (std::size_t i = 0; i < size; ++i) {
    contents.push_back(correction[i]);
    sum = static_cast<std::uint8_t>(sum + correction[i]);
  }
  contents.push_back(sum);
  return Answer(request, std::move(contents));
}

SerialReply FunctionSafety(const SerialRequest& request, const SmallSensorItems& items) {
  std::vector<std::uint8_t> contents = {kFunctionSafetyItem, kSafetyMark, items.safety_state};
  for (const std::uint16_t code : items.fault_codes) {
    contents.push_back(static_cast<std::uint8_t>(code));
    contents.push_back(static_cast<std::uint8_t>(code >> 8U));
  }
  return Answer(request, std::move(contents));
}

SerialReply SerialNumber(const SerialRequest& request, const std::string& serial_number) {
  std::vector<std::uint8_t> contents = {kSerialNumberItem, 1};
  AppendText(contents, serial_number, kSerialNumberSize);
  return Answer(request, std::move(contents));
}

}  // namespace

SerialReply SmallSensorHandler::Refuse(const SerialRequest& request, std::uint8_t reason) {
  if (request.kind == ReplyKind::kOta) return Answer(request, {reason});
  if (request.code == kSetRequest) return SetAnswer(request, reason);
  return Answer(request, {ItemOf(request), reason});
}

SerialReply SmallSensorHandler::Handle(const SerialRequest& request) {
  if (request.kind == ReplyKind::kOta) return TakeFirmware(request);
  if (request.payload.empty()) return Refuse(request, kBadRequest);
  if (request.code == kSetRequest) return Set(request);
  return request.code == kGetRequest ? Get(request) : Refuse(request, kBadRequest);
}

SerialReply SmallSensorHandler::Set(const SerialRequest& request) {
  if (request.payload.size() != kSetSize) return Refuse(request, kBadRequest);
  const std::uint8_t value = request.payload[kValueOffset];
  const std::uint8_t item = ItemOf(request);
  // The reply to a mode change has no room for a status, so a refusal ends early instead.
  if (item == kModeItem && value != kReadyForFirmware) return Answer(request, {item, kBadValue});
  std::uint8_t answer = kOtaTaken;
  state_.Change([&](SmallSensorItems& items) {
    switch (item) {
      case kOperationItem:
      case kStandbyItem:
        items.standby = item == kStandbyItem;
        break;
      case kStrongestItem:
      case kLastItem:
        items.last_return = item == kLastItem;
        break;
      case kSpinRateItem:
        items.spin_rate = value;
        break;
      case kModeItem:
        items.ready_for_firmware = true;
        answer = static_cast<std::uint8_t>(items.partition);
        break;
      default:
        answer = kUnknownItem;
        break;
    }
  });
  return SetAnswer(request, answer);
}

SerialReply SmallSensorHandler::Get(const SerialRequest& request) {
  switch (ItemOf(request)) {
    case kCorrectionItem:
      return Correction(request, state_.Items().correction);
    case kFunctionSafetyItem:
      return FunctionSafety(request, state_.Items());
    case kSerialNumberItem:
      return SerialNumber(request, state_.Items().serial_number);
    case kImuRangeItem:
      return SetImuRange(request);
    case kVersionItem:
      return Version(request);
    default:
      return Refuse(request, kUnknownItem);
  }
}

SerialReply SmallSensorHandler::SetImuRange(const SerialRequest& request) {
  constexpr std::size_t kSize = 3;
  if (request.payload.size() != kSize) return Refuse(request, kBadRequest);
  const std::uint8_t angular = request.payload[1];
  const std::uint8_t accel = request.payload[2];
  const bool is_known =
      std::find(kAngularRanges.begin(), kAngularRanges.end(), angular) != kAngularRanges.end();
  if (!is_known || accel > kLastAccelRange) return Refuse(request, kBadValue);
  state_.Change([&](SmallSensorItems& items) {
    items.angular_range = angular;
    items.accel_range = accel;
  });
  return Answer(request, {kImuRangeItem, angular, accel, 0});
}

SerialReply SmallSensorHandler::Version(const SerialRequest& request) const {
  if (request.payload.size() != kVersionRequest) return Refuse(request, kBadRequest);
  const SmallSensorItems items = state_.Items();
  const auto version = items.versions.find(request.payload[1]);
  if (version == items.versions.end()) return Refuse(request, kBadValue);
  std::vector<std::uint8_t> contents = {kVersionItem, version->first};
  AppendText(contents, version->second, kVersionSize);
  // Two bytes for length and code, two for item and index, the text, and two spare bytes.
  constexpr std::size_t kContents = 28;
  contents.resize(kContents);
  return Answer(request, std::move(contents));
}

SerialReply SmallSensorHandler::TakeFirmware(const SerialRequest& request) {
  if (request.code == kComponentFrames.start && !state_.Items().ready_for_firmware) {
    return Refuse(request, kOtaNotReady);
  }
  std::optional<ReceivedFirmware> completed;
  const OtaStatus status = firmware_.Receive(request, completed);
  if (completed) Install(*completed);
  return Answer(request, {status});
}

/// New firmware runs at once. The parts it is for report the version in its first line.
void SmallSensorHandler::Install(const ReceivedFirmware& firmware) {
  std::vector<std::uint8_t> parts;
  if (!firmware.is_component) {
    parts = firmware.purpose == kPblMode ? std::vector<std::uint8_t>{kPbl}
                                         : std::vector<std::uint8_t>{kBmbFpga, kTmbFpga, kBmbMcu};
  } else if (firmware.purpose == kTmbFpgaType) {
    parts = {kTmbFpga};
  } else if (firmware.purpose == kBmbFpgaType) {
    parts = {kBmbFpga};
  } else if (firmware.purpose == kApplicationType) {
    parts = {kBmbMcu};
  }
  const auto version = FirmwareVersionIn(firmware.bytes);
  state_.Change([&](SmallSensorItems& items) {
    for (const std::uint8_t part : parts) {
      if (version) items.versions[part] = *version;
    }
    if (firmware.is_component && firmware.purpose == kApplicationType) {
      items.partition = items.partition == Partition::kA ? Partition::kB : Partition::kA;
    }
  });
}

}  // namespace varkel::sim
