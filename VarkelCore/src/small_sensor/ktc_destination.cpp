#include "VarkelCore/src/small_sensor/ktc_destination.h"

#include <charconv>
#include <limits>
#include <optional>
#include <system_error>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel {

namespace {

using quarn::lidar::SerialExchange;

constexpr std::uint8_t kReadCommand = 0x08;
constexpr std::uint8_t kWriteCommand = 0x20;
constexpr std::size_t kAddressOffset = 12;
constexpr std::size_t kAddressSize = 4;
constexpr std::size_t kPortOffset = kAddressOffset + kAddressSize;

std::optional<std::vector<std::uint8_t>> ReadAddress(const std::string& text) {
  std::vector<std::uint8_t> bytes;
  const char* at = text.data();
  const char* const text_end = at + text.size();
  while (bytes.size() < kAddressSize) {
    std::uint8_t value = 0;
    const auto [end, error] = std::from_chars(at, text_end, value);
    if (error != std::errc()) return std::nullopt;
    bytes.push_back(value);
    const bool last = bytes.size() == kAddressSize;
    if (last ? end != text_end : end == text_end || *end != '.') return std::nullopt;
    at = last ? end : end + 1;
  }
  return bytes;
}

}  // namespace

tl::expected<Destination, int> ReadDestination(SmallSensorChannel& channel,
                                               SmallSensorChannel::Logged logged) {
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

int WriteDestination(SmallSensorChannel& channel, const std::string& ip, int port) {
  auto payload = ReadAddress(ip);
  const bool is_port = port >= 0 && port <= std::numeric_limits<std::uint16_t>::max();
  if (!payload || !is_port) return SerialExchange::kNotSent;
  payload->resize(kAddressSize + sizeof(std::uint16_t));
  quarn::lidar::StoreBigEndian(*payload, kAddressSize, static_cast<std::uint16_t>(port));
  const ExchangeResult reply =
      channel.QueryKtc(kWriteCommand, *payload, SmallSensorChannel::Logged::kYes);
  return reply ? 0 : reply.error();
}

}  // namespace varkel
