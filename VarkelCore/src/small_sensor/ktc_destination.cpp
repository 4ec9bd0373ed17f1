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

int ReadDestination(SmallSensorLink& link, bool silent, Destination& destination) {
  std::vector<std::uint8_t> reply;
  const int code = link.QueryKtc(kReadCommand, {}, reply, silent);
  if (code != 0) return code;
  if (reply.size() < kPortOffset + sizeof(destination.port)) return SerialExchange::kWrongReply;
  destination.ip.clear();
  for (std::size_t i = 0; i < kAddressSize; ++i) {
    destination.ip += (i == 0 ? "" : ".") + std::to_string(reply[kAddressOffset + i]);
  }
  destination.port = quarn::lidar::LoadBigEndian<std::uint16_t>(reply, kPortOffset);
  return 0;
}

int WriteDestination(SmallSensorLink& link, const std::string& ip, int port) {
  auto [fault, payload] = quarn::lidar::ReadByteText(ip, quarn::lidar::kIpv4Text);
  const bool is_port = port >= 0 && port <= std::numeric_limits<std::uint16_t>::max();
  if (fault != quarn::lidar::ByteTextFault::kNone || !is_port) return SerialExchange::kNotSent;
  payload.resize(kAddressSize + sizeof(std::uint16_t));
  quarn::lidar::StoreBigEndian(payload, kAddressSize, static_cast<std::uint16_t>(port));
  std::vector<std::uint8_t> reply;
  return link.QueryKtc(kWriteCommand, payload, reply, false);
}

}  // namespace varkel
