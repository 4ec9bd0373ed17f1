#include "VarkelCore/src/small_sensor/small_sensor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>

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

// Two wordings that users know from different functions.
constexpr char kNotReady[] = "lidar is not connected, or lidar is upgrade";
constexpr char kNotReadyForKtc[] = "lidar is not connected, or lidar is upgrading";

constexpr std::size_t kMinCorrectionReply = 6;
constexpr std::size_t kCorrectionData = 5;
constexpr std::size_t kMinSafetyReply = 5;
constexpr std::size_t kSafetyMark = 3;
constexpr std::uint8_t kSafetyMarkValue = 0xA1;
constexpr std::size_t kFaultCodes = 5;
constexpr std::size_t kImuReplySize = 6;

// The sensor's code of each entry of the page's list.
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

/// 0 for a text that is no unsigned decimal number of 32 bits.
std::uint32_t ReadBaudRate(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_suffix(text.size() - (text.find_last_not_of(kBlanks) + 1));
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

/// 0, or the status with which the sensor refused, or the exchange's code.
int SetItem(SerialExchange& exchange, std::uint8_t item, std::uint8_t value) {
  std::uint8_t status = 0;
  const int result = quarn::lidar::SetItem(exchange, item, value, status);
  return result != 0 ? result : status;
}

int GetItem(SerialExchange& exchange, std::initializer_list<std::uint8_t> payload, std::size_t min_size,
            Bytes& body) {
  return quarn::lidar::GetItem(exchange, std::span(payload.begin(), payload.size()), min_size, body);
}

int ReadCorrection(SerialExchange& exchange, Bytes& data) {
  Bytes body;
  const int result = GetItem(exchange, {quarn::lidar::kCorrectionItem}, kMinCorrectionReply, body);
  if (result != 0) return result;
  const std::size_t size = body[kReplyValue];
  if (body.size() != size + kMinCorrectionReply) return SerialExchange::kWrongReply;
  const auto begin = body.begin() + kCorrectionData;
  data.assign(begin, begin + static_cast<std::ptrdiff_t>(size));
  return 0;
}

}  // namespace

void SmallSensor::SetStandby(int standby) {
  const Exchange exchange = ReadyAsKtc();
  if (!exchange) return;
  const std::uint8_t mode = standby != 0 ? quarn::lidar::kStandbyItem : quarn::lidar::kOperationItem;
  if (Report(SetItem(*exchange, mode, 0), "set lidar mode error, ret:")) exchange->set_current_mode(mode);
}

void SmallSensor::SetSpinRate(int rate) {
  const Exchange exchange = ReadyAsKtc();
  if (!exchange) return;
  Report(SetItem(*exchange, quarn::lidar::kSpinRateItem, static_cast<std::uint8_t>(rate)),
         "set lidar spin rate error, ret:");
}

void SmallSensor::SetReturnMode(int mode) {
  const Exchange exchange = ReadyAsKtc();
  if (!exchange) return;
  const std::uint8_t item = mode != 0 ? quarn::lidar::kLastItem : quarn::lidar::kStrongestItem;
  Report(SetItem(*exchange, item, 0), "set lidar return mode error, ret:");
}

int SmallSensor::GetCorrection(const std::string& path) {
  const Exchange exchange = ReadyAsKtc();
  if (!exchange) return -1;
  Bytes data;
  const int code = ReadCorrection(*exchange, data);
  if (!Report(code, "get calibration error, ret:")) return code;
  if (WriteAtomically(QString::fromStdString(path), data) != WriteResult::kWritten) {
    const std::string text = "create calibration file fail, save correction file error";
    report_.Error(text);
    report_.Log(text, "ERROR");
    return -1;
  }
  return 0;
}

std::vector<std::string> SmallSensor::GetLidarFunctionSafety() {
  const Exchange exchange = ReadyAsKtc();
  if (!exchange) return {};
  Bytes body;
  int code = GetItem(*exchange, {quarn::lidar::kFunctionSafetyItem}, kMinSafetyReply, body);
  if (code == 0 && body[kSafetyMark] != kSafetyMarkValue) code = SerialExchange::kWrongReply;
  if (!Report(code, "get function safety error, ret:")) return {};
  std::vector<std::string> texts = {StateText(body[kReplyValue])};
  for (std::size_t at = kFaultCodes; at + sizeof(std::uint16_t) <= body.size(); at += sizeof(std::uint16_t)) {
    texts.push_back(FaultText(LoadLittleEndian<std::uint16_t>(body, at)));
  }
  return texts;
}

std::string SmallSensor::GetBaudRate() {
  const Channel channel = ReadyIfKtc("GetBaudRate is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return {};
  const ExchangeResult reply = channel->QueryKtc(kKtcExtensionCmd, quarn::lidar::kGetBaudRatePayload,
                                                 SmallSensorChannel::Logged::kYes);
  int code = reply ? 0 : reply.error();
  if (reply && reply->size() < sizeof(std::uint32_t)) code = SerialExchange::kWrongReply;
  if (!Report(code, "get baud rate error, ret:")) return {};
  return std::to_string(LoadBigEndian<std::uint32_t>(*reply, reply->size() - sizeof(std::uint32_t)));
}

void SmallSensor::SetBaudRate(const std::string& text) {
  const Channel channel = ReadyIfKtc("SetBaudRate is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return;
  const std::uint32_t baud_rate = ReadBaudRate(text);
  if (baud_rate == 0) {
    report_.Error("invalid baud rate value");
    return;
  }
  const ExchangeResult reply = channel->QueryKtc(
      kKtcExtensionCmd, quarn::lidar::SetBaudRatePayload(baud_rate), SmallSensorChannel::Logged::kYes);
  if (Report(reply ? 0 : reply.error(), "set baud rate error, ret:")) {
    report_.Success("set baud rate successful");
  }
}

std::vector<std::string> SmallSensor::GetDestinationConfig(bool silent) {
  const Channel channel =
      ReadyIfKtc("GetDestinationConfig is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return {};
  using Logged = SmallSensorChannel::Logged;
  const auto destination = ReadDestination(*channel, silent ? Logged::kNo : Logged::kYes);
  if (!Report(destination ? 0 : destination.error(), "get destination config error, ret:")) return {};
  return {destination->ip, std::to_string(destination->port)};
}

bool SmallSensor::SetDestinationIPandPort(const std::string& ip, int port) {
  const Channel channel =
      ReadyIfKtc("SetDestinationIPandPort is only supported in KTC serial mode", kNotReadyForKtc);
  if (!channel) return false;
  if (!Report(WriteDestination(*channel, ip, port), "set destination IP and port error, ret:")) return false;
  report_.Success("set destination IP and port successful");
  return true;
}

void SmallSensor::SetImuRange(int angular_range_index, int accel_range_index) {
  const auto angular = static_cast<unsigned>(angular_range_index);
  const auto accel = static_cast<unsigned>(accel_range_index);
  if (angular >= kAngularCodes.size()) {
    report_.Error("Invalid angular range index");
    return;
  }
  if (accel >= kAccelCodes.size()) {
    report_.Error("Invalid acceleration range index");
    return;
  }
  const Channel channel =
      ReadyIfKtc("Marvo IMU range setting is only supported in KTC_SERIAL mode", kNotReady);
  if (!channel) return;
  Bytes body;
  int code =
      GetItem(*channel->ktc_exchange(),
              {quarn::lidar::kImuRangeItem, kAngularCodes[angular], kAccelCodes[accel]}, kImuReplySize, body);
  if (code == 0 && body.size() != kImuReplySize) code = SerialExchange::kWrongReply;
  if (Report(code, "set IMU range error, ret:")) report_.Success("IMU range set successfully");
}

/// The exchange of the functions that switch the controller to KTC first, whether they then succeed or not.
SmallSensor::Exchange SmallSensor::ReadyAsKtc() {
  connect_type_ = kKtcToSmallSensor;
  const Channel channel = Ready(kNotReady);
  return channel ? channel->ktc_exchange() : nullptr;
}

/// The channel of the functions that refuse while the controller is no KTC one.
SmallSensor::Channel SmallSensor::ReadyIfKtc(const char* only_ktc, const char* not_ready) {
  if (connect_type_ == kKtcToSmallSensor) return Ready(not_ready);
  report_.Error(only_ktc);
  return nullptr;
}

/// A channel with a KTC exchange; else a notice.
SmallSensor::Channel SmallSensor::Ready(const char* refusal) {
  Channel channel = activity_.is_upgrading() ? nullptr : channel_();
  if (channel && channel->ktc_exchange()) return channel;
  report_.Error(refusal);
  return nullptr;
}

/// True for code 0.
bool SmallSensor::Report(int code, const char* prefix) {
  if (code == 0) return true;
  const std::string text = prefix + std::to_string(code);
  report_.Error(text);
  report_.Log(text, "ERROR");
  return false;
}

}  // namespace varkel
