#include "VarkelCore/src/small_sensor/small_sensor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/small_sensor/ktc_destination.h"
#include "VarkelCore/src/tasks/atomic_file.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/sensor_requests.h"

namespace varkel {

namespace {

using quarn::lidar::kKtcExtensionCmd;
using quarn::lidar::kReplyValue;
using quarn::lidar::LoadBigEndian;
using quarn::lidar::LoadLittleEndian;
using quarn::lidar::SerialExchange;
using Bytes = std::vector<std::uint8_t>;

// Different functions have different wordings, both familiar to users.
constexpr char kNotReady[] = "lidar is not connected, or lidar is upgrade";
constexpr char kNotReadyForKtc[] = "lidar is not connected, or lidar is upgrading";

constexpr std::size_t kMinCorrectionReply = 6;
constexpr std::size_t kCorrectionData = 5;
constexpr std::size_t kMinSafetyReply = 5;
constexpr std::size_t kSafetyMark = 3;
constexpr std::uint8_t kSafetyMarkValue = 0xA1;
constexpr std::size_t kFaultCodes = 5;
constexpr std::size_t kImuReplySize = 6;

// The sensor's codes for the entries of the page's lists.
constexpr std::array<std::uint8_t, 6> kAngularCodes = {0, 1, 2, 3, 4, 8};
constexpr std::array<std::uint8_t, 4> kAccelCodes = {0, 1, 2, 3};

std::string StateText(std::uint8_t state) {
  constexpr std::array<const char*, 3> kStates = {"Normal", "Warning", "Shutdown"};
  return state < kStates.size() ? kStates[state] : std::to_string(state);
}

std::string FaultText(std::uint16_t code) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "0x%04X", unsigned{code});
  return text.data();
}

/// 0 if the text is not an unsigned 32-bit decimal number.
std::uint32_t ParseBaudRate(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_suffix(text.size() - (text.find_last_not_of(kBlanks) + 1));
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

/// Fails with the status with which the sensor refused, or with the exchange's code.
Exchanged<void> WriteItem(SerialExchange& exchange, std::uint8_t item, std::uint8_t value) {
  const Exchanged<std::uint8_t> status = quarn::lidar::SetItem(exchange, item, value);
  if (!status) return tl::unexpected(status.error());
  if (*status != 0) return tl::unexpected(std::int32_t{*status});
  return {};
}

ExchangeResult GetItem(SerialExchange& exchange, std::initializer_list<std::uint8_t> payload,
                       std::size_t min_size) {
  return quarn::lidar::GetItem(exchange, std::span(payload.begin(), payload.size()), min_size);
}

ExchangeResult ReadCorrection(SerialExchange& exchange) {
  ExchangeResult body = GetItem(exchange, {quarn::lidar::kCorrectionItem}, kMinCorrectionReply);
  if (!body) return body;
  const std::size_t size = (*body)[kReplyValue];
  if (body->size() != size + kMinCorrectionReply) return tl::unexpected(SerialExchange::kWrongReply);
  const auto begin = body->begin() + kCorrectionData;
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
}

/// The state's text, then the fault codes.
Exchanged<std::vector<std::string>> ReadFunctionSafety(SerialExchange& exchange) {
  const ExchangeResult body = GetItem(exchange, {quarn::lidar::kFunctionSafetyItem}, kMinSafetyReply);
  if (!body) return tl::unexpected(body.error());
  if ((*body)[kSafetyMark] != kSafetyMarkValue) return tl::unexpected(SerialExchange::kWrongReply);
  std::vector<std::string> texts = {StateText((*body)[kReplyValue])};
  for (std::size_t at = kFaultCodes; at + sizeof(std::uint16_t) <= body->size();
       at += sizeof(std::uint16_t)) {
    texts.push_back(FaultText(LoadLittleEndian<std::uint16_t>(*body, at)));
  }
  return texts;
}

/// In decimal.
Exchanged<std::string> ReadBaudRate(SmallSensorChannel& channel) {
  const ExchangeResult reply =
      channel.QueryKtc(kKtcExtensionCmd, quarn::lidar::kGetBaudRatePayload, SmallSensorChannel::Logged::kYes);
  if (!reply) return tl::unexpected(reply.error());
  constexpr std::size_t kRateSize = sizeof(std::uint32_t);
  if (reply->size() < kRateSize) return tl::unexpected(SerialExchange::kWrongReply);
  return std::to_string(LoadBigEndian<std::uint32_t>(*reply, reply->size() - kRateSize));
}

Exchanged<void> WriteImuRange(SerialExchange& exchange, std::uint8_t angular, std::uint8_t accel) {
  const ExchangeResult body = GetItem(exchange, {quarn::lidar::kImuRangeItem, angular, accel}, kImuReplySize);
  if (!body) return tl::unexpected(body.error());
  if (body->size() != kImuReplySize) return tl::unexpected(SerialExchange::kWrongReply);
  return {};
}

}  // namespace

FunctionResult<void> SmallSensor::SetStandby(int standby) {
  const auto exchange = ReadyAsKtc();
  if (!exchange) return tl::unexpected(exchange.error());
  const std::uint8_t mode = standby != 0 ? quarn::lidar::kStandbyItem : quarn::lidar::kOperationItem;
  auto result = Report(WriteItem(**exchange, mode, 0), "set lidar mode error, ret:");
  if (result) (*exchange)->set_current_mode(mode);
  return result;
}

FunctionResult<void> SmallSensor::SetSpinRate(int rate) {
  const auto exchange = ReadyAsKtc();
  if (!exchange) return tl::unexpected(exchange.error());
  return Report(WriteItem(**exchange, quarn::lidar::kSpinRateItem, static_cast<std::uint8_t>(rate)),
                "set lidar spin rate error, ret:");
}

FunctionResult<void> SmallSensor::SetReturnMode(int mode) {
  const auto exchange = ReadyAsKtc();
  if (!exchange) return tl::unexpected(exchange.error());
  const std::uint8_t item = mode != 0 ? quarn::lidar::kLastItem : quarn::lidar::kStrongestItem;
  return Report(WriteItem(**exchange, item, 0), "set lidar return mode error, ret:");
}

FunctionResult<void> SmallSensor::GetCorrection(const std::string& path) {
  const auto exchange = ReadyAsKtc();
  if (!exchange) return tl::unexpected(exchange.error());
  const auto data = Report(ReadCorrection(**exchange), "get calibration error, ret:");
  if (!data) return tl::unexpected(data.error());
  if (WriteAtomically(QString::fromStdString(path), *data) != WriteResult::kWritten) {
    const auto refusal = Refuse("create calibration file fail, save correction file error");
    report_.Log(refusal.value().text, "ERROR");
    return refusal;
  }
  return {};
}

FunctionResult<std::vector<std::string>> SmallSensor::GetLidarFunctionSafety() {
  const auto exchange = ReadyAsKtc();
  if (!exchange) return tl::unexpected(exchange.error());
  return Report(ReadFunctionSafety(**exchange), "get function safety error, ret:");
}

FunctionResult<std::string> SmallSensor::GetBaudRate() {
  const auto channel = ReadyIfKtc("GetBaudRate is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return tl::unexpected(channel.error());
  return Report(ReadBaudRate(**channel), "get baud rate error, ret:");
}

FunctionResult<void> SmallSensor::SetBaudRate(const std::string& text) {
  const auto channel = ReadyIfKtc("SetBaudRate is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return tl::unexpected(channel.error());
  const std::uint32_t baud_rate = ParseBaudRate(text);
  if (baud_rate == 0) return Refuse("invalid baud rate value");
  const ExchangeResult reply = (*channel)->QueryKtc(
      kKtcExtensionCmd, quarn::lidar::SetBaudRatePayload(baud_rate), SmallSensorChannel::Logged::kYes);
  auto result = Report(reply.map(DropReply), "set baud rate error, ret:");
  if (result) report_.Success("set baud rate successful");
  return result;
}

FunctionResult<std::vector<std::string>> SmallSensor::GetDestinationConfig(bool silent) {
  const auto channel =
      ReadyIfKtc("GetDestinationConfig is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return tl::unexpected(channel.error());
  using Logged = SmallSensorChannel::Logged;
  const auto destination = ReadDestination(**channel, silent ? Logged::kNo : Logged::kYes);
  return Report(destination, "get destination config error, ret:").map([](const Destination& to) {
    return std::vector<std::string>{to.ip, std::to_string(to.port)};
  });
}

FunctionResult<void> SmallSensor::SetDestinationIPandPort(const std::string& ip, int port) {
  const auto channel =
      ReadyIfKtc("SetDestinationIPandPort is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return tl::unexpected(channel.error());
  auto result = Report(WriteDestination(**channel, ip, port), "set destination IP and port error, ret:");
  if (result) report_.Success("set destination IP and port successful");
  return result;
}

FunctionResult<void> SmallSensor::SetImuRange(int angular_range_index, int accel_range_index) {
  const auto angular = static_cast<unsigned>(angular_range_index);
  const auto accel = static_cast<unsigned>(accel_range_index);
  if (angular >= kAngularCodes.size()) return Refuse("Invalid angular range index");
  if (accel >= kAccelCodes.size()) return Refuse("Invalid acceleration range index");
  const auto channel = ReadyIfKtc("Marvo IMU range setting is only supported in KTC_SERIAL mode", kNotReady);
  if (!channel) return tl::unexpected(channel.error());
  const auto exchange = (*channel)->ktc_exchange();
  auto result = Report(WriteImuRange(*exchange, kAngularCodes[angular], kAccelCodes[accel]),
                       "set IMU range error, ret:");
  if (result) report_.Success("IMU range set successfully");
  return result;
}

/// The exchange for functions that first switch the controller to KTC, even if they then fail.
FunctionResult<SmallSensor::Exchange> SmallSensor::ReadyAsKtc() {
  connect_type_ = kKtcToSmallSensor;
  return Ready(kNotReady).map([](const Channel& channel) { return channel->ktc_exchange(); });
}

/// The channel for functions that are refused unless the controller uses KTC.
FunctionResult<SmallSensor::Channel> SmallSensor::ReadyIfKtc(const char* only_ktc, const char* not_ready) {
  if (connect_type_ == kKtcToSmallSensor) return Ready(not_ready);
  return Refuse(only_ktc);
}

/// A channel with a KTC exchange; without one, a notice.
FunctionResult<SmallSensor::Channel> SmallSensor::Ready(const char* refusal) {
  Channel channel = activity_.is_upgrading() ? nullptr : channel_();
  if (channel && channel->ktc_exchange()) return channel;
  return Refuse(refusal);
}

/// The exchange's outcome; a failure is reported with the prefix and the code.
template <typename Value>
FunctionResult<Value> SmallSensor::Report(const Exchanged<Value>& outcome, const char* prefix) {
  return outcome.map_error([&](std::int32_t code) {
    FunctionFault fault{code, prefix + std::to_string(code)};
    report_.Error(fault.text);
    report_.Log(fault.text, "ERROR");
    return fault;
  });
}

tl::unexpected<FunctionFault> SmallSensor::Refuse(const std::string& text) {
  report_.Error(text);
  return tl::unexpected(FunctionFault{-1, text});
}

}  // namespace varkel
