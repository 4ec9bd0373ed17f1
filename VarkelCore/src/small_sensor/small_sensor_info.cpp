#include "VarkelCore/src/small_sensor/small_sensor_info.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <span>

#include "VarkelCore/src/catalogue/model_selection.h"
#include "VarkelCore/src/small_sensor/ktc_destination.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "libquarn/Source/src/sensor_requests.h"

namespace varkel {

namespace {

using quarn::lidar::kReplyValue;
using quarn::lidar::SerialExchange;
using Bytes = std::vector<std::uint8_t>;

/// The line also carries the user's commands.
constexpr std::chrono::milliseconds kPeriod{1000};

constexpr char kUnknown[] = "xxxxxxxx";
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

/// The text in a field that is padded with NUL bytes; nothing when it is empty or not printable ASCII.
std::optional<std::string> PaddedText(std::span<const std::uint8_t> field) {
  while (!field.empty() && field.back() == 0) field = field.first(field.size() - 1);
  const auto printable = [](std::uint8_t c) { return c >= 0x20 && c < 0x7F; };
  if (field.empty() || !std::all_of(field.begin(), field.end(), printable)) return std::nullopt;
  return std::string(field.begin(), field.end());
}

int QueryVersion(SerialExchange& exchange, std::uint8_t which, std::string& version) {
  std::array<std::uint8_t, kVersionRequest> payload{quarn::lidar::kVersionItem, which};
  Bytes body;
  const int code = quarn::lidar::GetItem(exchange, payload, kVersionReply, body);
  if (code != 0) return code;
  if (body.size() != kVersionReply) return SerialExchange::kWrongReply;
  const auto text = PaddedText(std::span<const std::uint8_t>(body).subspan(kReplyValue, kVersionText));
  if (!text) return SerialExchange::kWrongReply;
  version = *text;
  return 0;
}

}  // namespace

SmallSensorInfo::SmallSensorInfo(UserReport& report, SmallSensorLink& link, Host host)
    : report_(report), link_(link), host_(std::move(host)) {}

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
  info_ = {{kSerialNumber, kUnknown}};
  if (ConnectTypeOf(model_name_) == kKtcToSmallSensor) {
    info_.push_back({kDestinationIp, kUnknownAddress});
    info_.push_back({kDestinationPort, "xx"});
  }
  versions_ = {{kPbl, kUnknown}};
  if (model_name_ == kMarvoKtc) {
    versions_ = {{kBmbFpga, kUnknown}, {kTmbFpga, kUnknown}, {kBmbMcu, kUnknown}};
  }
  failures_.clear();
  pbl_asked_ = false;
}

void SmallSensorInfo::Start() {
  const std::lock_guard lock(thread_mutex_);
  if (thread_.joinable()) return;
  thread_ = std::jthread([this](const std::stop_token& stop) {
    do {
      Round(stop);
    } while (SleepUnlessStopped(stop, kPeriod));
  });
}

void SmallSensorInfo::Stop() {
  std::jthread leaving;  // joined when the lock is free again
  const std::lock_guard lock(thread_mutex_);
  leaving.swap(thread_);
}

void SmallSensorInfo::Round(const std::stop_token& stop) {
  const auto may_go_on = [&] {
    return !stop.stop_requested() && link_.is_connected() && !host_.is_upgrading();
  };
  bool ask_pbl = false;
  bool has_destination = false;
  {
    const std::lock_guard lock(mutex_);
    ask_pbl = model_name_ != kMarvoKtc && !pbl_asked_;
    has_destination = ConnectTypeOf(model_name_) == kKtcToSmallSensor;
  }
  if (may_go_on()) ReadSerialNumber();
  if (has_destination && may_go_on()) ReadDestinationRow();
  if (ask_pbl && may_go_on()) ReadPblVersion();
}

void SmallSensorInfo::ReadSerialNumber() {
  const auto exchange = link_.Exchange();
  if (!exchange) return;
  constexpr std::array<std::uint8_t, 2> kRequest = {quarn::lidar::kSerialNumberItem, 1};
  Bytes body;
  const int code = quarn::lidar::GetItem(*exchange, kRequest, kReplyValue, body);
  if (code != 0) {
    LogFailure(kSerialNumber, "Zelto-KTC get SN failed, ret:" + std::to_string(code));
    return;
  }
  const auto text = PaddedText(std::span<const std::uint8_t>(body).subspan(kReplyValue));
  LogFailure(kSerialNumber, text ? "" : "Zelto-KTC SN invalid after validation");
  if (text) Show(info_, kSerialNumber, *text);
}

void SmallSensorInfo::ReadDestinationRow() {
  Destination destination;
  if (ReadDestination(link_, true, destination) != 0) return;  // the page's own fields report it
  Show(info_, kDestinationIp, destination.ip);
  Show(info_, kDestinationPort, std::to_string(destination.port));
}

void SmallSensorInfo::ReadPblVersion() {
  getting_pbl_ = true;
  host_.pbl_changed();
  ReadVersion(kPbl, kPblIndex, "get pbl version error, ret:");
  {
    const std::lock_guard lock(mutex_);
    pbl_asked_ = true;
  }
  getting_pbl_ = false;
  host_.pbl_changed();
}

void SmallSensorInfo::ReadMarvoVersions() {
  ReadVersion(kBmbFpga, kBmbFpgaIndex, "Failed to get BMB FPGA version, ret:");
  ReadVersion(kTmbFpga, kTmbFpgaIndex, "Failed to get TMB FPGA version, ret:");
  ReadVersion(kBmbMcu, kBmbMcuIndex, "Failed to get BMB MCU version, ret:");
}

void SmallSensorInfo::ReadVersion(const char* label, std::uint8_t which, const char* failure) {
  const auto exchange = link_.Exchange();
  if (!exchange) return;
  std::string version = kUnknown;
  const int code = QueryVersion(*exchange, which, version);
  LogFailure(label, code == 0 ? "" : failure + std::to_string(code));
  Show(versions_, label, version);
}

void SmallSensorInfo::Show(std::vector<InfoRow>& rows, const char* label, const std::string& value) {
  {
    const std::lock_guard lock(mutex_);
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const InfoRow& r) { return r.label == label; });
    if (row == rows.end() || row->value == value) return;
    row->value = value;
  }
  host_.info_changed();
}

/// An empty text forgets the last failure.
void SmallSensorInfo::LogFailure(const char* query, const std::string& text) {
  {
    const std::lock_guard lock(mutex_);
    std::string& last = failures_[query];
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
