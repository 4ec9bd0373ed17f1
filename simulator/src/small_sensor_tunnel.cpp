#include "simulator/src/small_sensor_tunnel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Source/src/ktc_serial_client.h"

namespace varkel::sim {
namespace {

using quarn::lidar::kGetBaudRatePayload;
using quarn::lidar::kTunnelPrefix;
using ByteView = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 3> kSetBaudRatePrefix = {0x00, 0x01, 0x39};

bool StartsWith(ByteView bytes, ByteView prefix) {
  return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

}  // namespace

bool SmallSensorTunnel::Takes(const ReceivedRequest& request) {
  return request.command == quarn::lidar::kKtcExtensionCmd;
}

Reply SmallSensorTunnel::Handle(const ReceivedRequest& request, ReplyPlan& plan) const {
  const ByteView payload = request.payload;
  if (StartsWith(payload, kTunnelPrefix)) return Carry(payload.subspan(kTunnelPrefix.size()), plan);
  if (StartsWith(payload, kSetBaudRatePrefix)) return SetBaudRate(payload.subspan(kSetBaudRatePrefix.size()));
  if (!StartsWith(payload, kGetBaudRatePayload)) return {kUnknownCommand, {}};
  return payload.size() == kGetBaudRatePayload.size() ? BaudRate() : Reply{kWrongPayloadSize, {}};
}

Reply SmallSensorTunnel::Carry(ByteView frame, ReplyPlan& plan) const {
  const auto request = ParseSerialRequest(frame);
  if (!request) return {kBadSerialFrame, {}};
  SerialAnswer answer = AnswerSerialRequest(*request, Carriage::kInsideKtc, parts_);
  plan.delay = std::max(plan.delay, answer.plan.delay);
  if (answer.plan.piece_size) plan.piece_size = answer.plan.piece_size;
  plan.silent = plan.silent || answer.plan.silent;
  plan.closes = plan.closes || answer.plan.closes;
  if (answer.plan.close_after) plan.close_after = answer.plan.close_after;
  answer.bytes.insert(answer.bytes.begin(), kTunnelPrefix.begin(), kTunnelPrefix.end());
  return {kSuccess, std::move(answer.bytes)};
}

Reply SmallSensorTunnel::BaudRate() const {
  std::vector<std::uint8_t> payload(kGetBaudRatePayload.begin(), kGetBaudRatePayload.end());
  payload.resize(payload.size() + sizeof(std::uint32_t));
  quarn::lidar::StoreBigEndian(payload, kGetBaudRatePayload.size(), parts_.device.state.Items().baud_rate);
  return {kSuccess, std::move(payload)};
}

Reply SmallSensorTunnel::SetBaudRate(ByteView payload) const {
  if (payload.size() != sizeof(std::uint32_t)) return {kWrongPayloadSize, {}};
  const auto rate = quarn::lidar::LoadBigEndian<std::uint32_t>(payload, 0);
  if (rate == 0) return {kValueNotAllowed, {}};
  parts_.device.state.Change([rate](SmallSensorItems& items) { items.baud_rate = rate; });
  return {kSuccess, {kSetBaudRatePrefix.begin(), kSetBaudRatePrefix.end()}};
}

}  // namespace varkel::sim
