#include "VarkelCore/src/small_sensor/small_sensor_info.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <span>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/catalogue/var_info.h"
#include "VarkelCore/src/small_sensor/ktc_destination.h"
#include "libquarn/Source/src/sensor_requests.h"

namespace varkel {

namespace {

using quarn::lidar::kReplyValue;
using quarn::lidar::SerialExchange;

constexpr char kUnknownAddress[] = "xx.xx.xx.xx";

constexpr char kSerialNumber[] = "Serial Number";
constexpr char kDestinationIp[] = "Destination IP";
constexpr char kDestinationPort[] = "UDP Port";
constexpr char kBmbFpga[] = "BMB FPGA Version";
constexpr char kTmbFpga[] = "TMB FPGA Version";
constexpr char kBmbMcu[] = "BMB MCU Version";
constexpr char kPbl[] = "PBL Version";

constexpr std::uint8_t kBmbFpgaIndex = 0;
constexpr std::uint8_t kTmbFpgaIndex = 1;
constexpr std::uint8_t kBmbMcuIndex = 2;
constexpr std::uint8_t kPblIndex = 5;

constexpr std::size_t kVersionRequest = 27;
constexpr std::size_t kVersionReply = 30;
constexpr std::size_t kVersionText = 24;

/// The text in a field that is padded with NUL bytes; nullopt if it is empty or not printable ASCII.
std::optional<std::string> PaddedText(std::span<const std::uint8_t> field) {
  while (!field.empty() && field.back() == 0) field = field.first(field.size() - 1);
  const auto printable = [](std::uint8_t c) { return c >= 0x20 && c < 0x7F; };
  if (field.empty() || !std::all_of(field.begin(), field.end(), printable)) return std::nullopt;
  return std::string(field.begin(), field.end());
}

Exchanged<std::string> QueryVersion(SerialExchange& exchange, std::uint8_t which) {
  const std::array<std::uint8_t, kVersionRequest> payload{quarn::lidar::kVersionItem, which};
  const ExchangeResult body = quarn::lidar::GetItem(exchange, payload, kVersionReply);
  if (!body) return tl::unexpected(body.error());
  if (body->size() != kVersionReply) return tl::unexpected(SerialExchange::kWrongReply);
  auto text = PaddedText(std::span(*body).subspan(kReplyValue, kVersionText));
  if (!text) return tl::unexpected(SerialExchange::kWrongReply);
  return *std::move(text);
}

}  // namespace

void SmallSensorInfo::SetModel(const std::string& model_name) {
  const std::lock_guard lock(mutex_);
  model_name_ = model_name;
  FillPlaceholders();
}

void SmallSensorInfo::Reset() {
  const std::lock_guard lock(mutex_);
  FillPlaceholders();
}

void SmallSensorInfo::FillPlaceholders() {
  info_ = {{kSerialNumber, kUnknownText}};
  if (ConnectTypeOf(model_name_) == kKtcToSmallSensor) {
    info_.push_back({kDestinationIp, kUnknownAddress});
    info_.push_back({kDestinationPort, "xx"});
  }
  versions_ = {{kPbl, kUnknownText}};
  if (model_name_ == kMarvoKtc) {
    versions_ = {{kBmbFpga, kUnknownText}, {kTmbFpga, kUnknownText}, {kBmbMcu, kUnknownText}};
  }
  failures_.clear();
  version_tries_.clear();
}

void SmallSensorInfo::Round(SmallSensorChannel& channel, const std::stop_token& stop) {
  const Query query{channel, stop};
  const auto may_continue = [&] { return !stop.stop_requested() && !activity_.is_upgrading(); };
  bool has_destination = false;
  {
    const std::lock_guard lock(mutex_);
    has_destination = ConnectTypeOf(model_name_) == kKtcToSmallSensor;
  }
  if (may_continue()) ReadSerialNumber(query);
  if (has_destination && may_continue()) ReadDestinationRow(query);
  for (const Version& version : VersionsToRead()) {
    if (may_continue()) ReadVersion(query, version);
  }
}

std::vector<SmallSensorInfo::Version> SmallSensorInfo::VersionsToRead() {
  static constexpr Version kMarvoVersions[] = {
      {kBmbFpga, kBmbFpgaIndex, "Failed to get BMB FPGA version, ret:"},
      {kTmbFpga, kTmbFpgaIndex, "Failed to get TMB FPGA version, ret:"},
      {kBmbMcu, kBmbMcuIndex, "Failed to get BMB MCU version, ret:"}};
  static constexpr Version kOtherVersions[] = {{kPbl, kPblIndex, "get pbl version error, ret:"}};
  const std::lock_guard lock(mutex_);
  const auto all =
      model_name_ == kMarvoKtc ? std::span<const Version>(kMarvoVersions) : std::span(kOtherVersions);
  std::vector<Version> wanted;
  std::copy_if(all.begin(), all.end(), std::back_inserter(wanted),
               [this](const Version& version) { return version_tries_[version.label] < kVersionTries; });
  return wanted;
}

void SmallSensorInfo::ReadSerialNumber(const Query& query) {
  constexpr std::array<std::uint8_t, 2> kRequest = {quarn::lidar::kSerialNumberItem, 1};
  const ExchangeResult body = quarn::lidar::GetItem(*query.channel.serial_exchange(), kRequest, kReplyValue);
  if (!body) {
    LogFailure(query, kSerialNumber, "Zelto-KTC get SN failed, ret:" + std::to_string(body.error()));
    return;
  }
  const auto text = PaddedText(std::span(*body).subspan(kReplyValue));
  LogFailure(query, kSerialNumber, text ? "" : "Zelto-KTC SN invalid after validation");
  if (text) Show(info_, kSerialNumber, *text);
}

void SmallSensorInfo::ReadDestinationRow(const Query& query) {
  const auto destination = ReadDestination(query.channel, SmallSensorChannel::Logged::kNo);
  if (!destination) return;  // the page's own fields report it
  Show(info_, kDestinationIp, destination->ip);
  Show(info_, kDestinationPort, std::to_string(destination->port));
}

void SmallSensorInfo::ReadVersion(const Query& query, const Version& version) {
  const bool is_pbl = version.which == kPblIndex;
  if (is_pbl) SetGettingPbl(true);
  const auto text = QueryVersion(*query.channel.serial_exchange(), version.which);
  if (!query.stop.stop_requested()) {
    const std::lock_guard lock(mutex_);
    int& tries = version_tries_[version.label];
    tries = text ? kVersionTries : tries + 1;
  }
  LogFailure(query, version.label, text ? "" : version.failure + std::to_string(text.error()));
  Show(versions_, version.label, text.value_or(kUnknownText));
  if (is_pbl) SetGettingPbl(false);
}

void SmallSensorInfo::SetGettingPbl(bool running) {
  getting_pbl_ = running;
  events_.pbl_changed();
}

void SmallSensorInfo::Show(std::vector<InfoRow>& rows, const char* label, const std::string& value) {
  {
    const std::lock_guard lock(mutex_);
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const InfoRow& r) { return r.label == label; });
    if (row == rows.end() || row->value == value) return;
    row->value = value;
  }
  events_.info_changed();
}

/// An empty text clears the last failure.
void SmallSensorInfo::LogFailure(const Query& query, const char* label, const std::string& text) {
  if (query.stop.stop_requested()) return;
  {
    const std::lock_guard lock(mutex_);
    std::string& last = failures_[label];
    if (last == text) return;
    last = text;
  }
  if (!text.empty()) report_.Log(text, "ERROR");
}

std::vector<InfoRow> SmallSensorInfo::Info() const {
  const std::lock_guard lock(mutex_);
  return info_;
}

std::vector<InfoRow> SmallSensorInfo::Versions() const {
  const std::lock_guard lock(mutex_);
  return versions_;
}

}  // namespace varkel
