#include "VarkelCore/src/small_sensor/ktc_destination.h"

#include <limits>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/byte_text.h"

namespace varkel {

namespace {

using quarn::lidar::SerialExchange;

constexpr std::uint8_t kReadCommand = 0x08;
constexpr std::uint8_t kWriteCommand = 0x20;
constexpr std::size_t kAddressOffset = 12;
constexpr std::size_t kAddressSize = 4;
constexpr std::size_t kPortOffset = kAddressOffset + kAddressSize;

}  // namespace

Exchanged<Destination> ReadDestination(SmallSensorChannel& channel, SmallSensorChannel::Logged logged) {
  const ExchangeResult reply = channel.QueryKtc(kReadCommand, {}, logged);
  if (!reply) return tl::unexpected(reply.error());
  Destination destination;
  if (reply->size() < kPortOffset + sizeof(destination.port)) {
    return tl::unexpected(SerialExchange::kWrongReply);
  }
  for (std::size_t i = 0; i < kAddressSize; ++i) {
    destination.ip += (i == 0 ? "" : ".") + std::to_string((*reply)[kAddressOffset + i]);
  }
  destination.port = quarn::lidar::LoadBigEndian<std::uint16_t>(*reply, kPortOffset);
  return destination;
}

Exchanged<void> WriteDestination(SmallSensorChannel& channel, const std::string& ip, int port) {
  auto [fault, payload] = quarn::lidar::ReadByteText(ip, quarn::lidar::kIpv4Text);
  const bool is_port = port >= 0 && port <= std::numeric_limits<std::uint16_t>::max();
  if (fault != quarn::lidar::ByteTextFault::kNone || !is_port) {
    return tl::unexpected(SerialExchange::kNotSent);
  }
  payload.resize(kAddressSize + sizeof(std::uint16_t));
  quarn::lidar::StoreBigEndian(payload, kAddressSize, static_cast<std::uint16_t>(port));
  return channel.QueryKtc(kWriteCommand, payload, SmallSensorChannel::Logged::kYes).map(DropReply);
}

}  // namespace varkel
