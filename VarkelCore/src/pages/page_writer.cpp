#include "VarkelCore/src/pages/page_writer.h"

#include <QByteArray>
#include <QDebug>
#include <QString>
#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/values/str_parser.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

constexpr char kRun[] = "VarkelManager::Run";

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

QString Hex(const std::vector<std::uint8_t>& bytes) {
  return QString::fromLatin1(
      QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())).toHex(' '));
}

/// False when the field lies where no request reaches: a table's lengths must not become memory.
bool Append(std::vector<std::uint8_t>& payload, std::uint32_t position, std::uint32_t length,
            const std::vector<std::uint8_t>& bytes) {
  constexpr std::size_t kLongestPayload = 0xFFFF;
  const std::size_t end = std::size_t{position} + length;
  if (end > kLongestPayload) return false;
  if (payload.size() < end) payload.resize(end);
  const std::size_t count = std::min<std::size_t>(bytes.size(), length);
  std::copy_n(bytes.begin(), count, payload.begin() + static_cast<std::ptrdiff_t>(position));
  return true;
}

std::vector<std::uint8_t> FieldBytes(const VarInfo& var, const std::string& value) {
  if (value.empty()) {
    throw std::invalid_argument("Unknown error with this var: It has no current_val. var_name = " +
                                var.var_name);
  }
  const std::unique_ptr<StrParser> codec = MakeStrParser(var.var_type);
  if (!codec) {
    qDebug().noquote() << kRun << "(): This var_type"
                       << "\"" + Text(var.var_type) + "\""
                       << "is not supported currently.";
    qDebug().noquote() << "strParser == nullptr, var_name:" + Text(var.var_name) +
                              ", var_type:" + Text(var.var_type) + ", current_val:" + Text(value);
    throw std::invalid_argument("Error with var type");
  }
  return codec->ParseToBytes(value, var.set_coefficient);
}

}  // namespace

WritePlan PlanWrite(const ConfigParser& catalogue, int module, const PendingEdits& edits) {
  WritePlan plan;
  std::vector<VarInfo*> to_refresh;
  std::unordered_set<const VarInfo*> seen_vars;
  std::unordered_set<std::string> seen_commands;
  bool writes_address = false;
  for (const auto& group : catalogue.module_vars().at(static_cast<std::size_t>(module))) {
    for (const VarInfo* var : group) {
      if (var->set_cmd.empty() || !edits.IsPending(var->set_cmd)) continue;
      if (!seen_commands.insert(var->set_cmd).second) continue;
      for (VarInfo* carried : catalogue.set_cmd_map().at(var->set_cmd)) {
        if (!carried->get_cmd.empty() && seen_vars.insert(carried).second) to_refresh.push_back(carried);
      }
      if (var->set_cmd == kAddressSetCommand) {
        writes_address = true;
      } else {
        plan.commands.push_back(var->set_cmd);
      }
    }
  }
  if (writes_address) plan.commands.emplace_back(kAddressSetCommand);
  plan.refresh = GroupByGetCommand(to_refresh);
  return plan;
}

SetRequest MakeSetRequest(ConfigParser& catalogue, const std::string& set_cmd) {
  SetRequest request{set_cmd, {}, {}};
  for (const VarInfo* var : catalogue.set_cmd_map().at(set_cmd)) {
    if (var->get_cmd.empty() && var->var_type != "raw") {
      throw std::invalid_argument(
          "There are undefined cases in the csv config file where there is a line with 'set' and no 'get', "
          "but the var_type is not 'raw'.");
    }
    std::string value = catalogue.CurrentValue(*var);
    const std::vector<std::uint8_t> bytes = FieldBytes(*var, value);
    std::pair<std::uint32_t, std::uint32_t> field;
    const auto written = static_cast<std::uint32_t>(request.payload.size());
    if (!catalogue.GetVarPosOffset(set_cmd, var->var_id, written, field) ||
        !Append(request.payload, field.first, field.second, bytes)) {
      throw std::invalid_argument("Error with var position, var_name = " + var->var_name);
    }
    request.values.emplace_back(var, std::move(value));
  }
  return request;
}

void PageWriter::Run(ConfigParser& catalogue, quarn::lidar::KtcClient& client, int module) const {
  try {
    WriteAll(catalogue, client, module);
    targets_.report.Success(
        "Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will need to "
        "restart the lidar for it to work.");
  } catch (const std::exception& error) {
    qDebug().noquote() << kRun << "(): Caught Exception: " << error.what();
    targets_.report.Error("Set Failed: " + std::string(error.what()));
  }
}

void PageWriter::WriteAll(ConfigParser& catalogue, quarn::lidar::KtcClient& client, int module) const {
  const WritePlan plan = PlanWrite(catalogue, module, targets_.edits);
  for (const ReadGroup& group : plan.refresh) {
    targets_.reader.GetInfoFromLidarWithSameCmd(catalogue, client, group.vars, FovRead::kOrdinary);
  }
  const FovTable::Angles angles = targets_.fov.Get();
  std::vector<SetRequest> sent;
  for (const std::string& set_cmd : plan.commands) {
    sent.push_back(set_cmd == kFovSetCommand ? WriteFov(catalogue, client, angles)
                                             : Write(catalogue, client, set_cmd));
  }
  for (const SetRequest& request : sent) Confirm(catalogue, request, angles);
}

/// What the user changed again in the meantime stays pending.
void PageWriter::Confirm(const ConfigParser& catalogue, const SetRequest& sent,
                         const FovTable::Angles& angles) const {
  bool whole = sent.set_cmd != kFovSetCommand || targets_.fov.Get() == angles;
  std::vector<std::string> confirmed;
  const auto lock = catalogue.LockValues();
  for (const auto& [var, value] : sent.values) {
    if (var->current_val == value) {
      confirmed.push_back(var->var_id);
    } else {
      whole = false;
    }
  }
  targets_.edits.Confirm(confirmed);
  if (whole) targets_.edits.ConfirmCommand(sent.set_cmd);
}

SetRequest PageWriter::WriteFov(const ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                const FovTable::Angles& angles) const {
  const VarInfo& channel = *catalogue.set_cmd_map().at(kFovSetCommand).front();
  const std::string value = catalogue.CurrentValue(channel);
  std::array<float, FovTable::kSectors> starts{};
  std::copy_n(angles.begin(), starts.size(), starts.begin());
  if (client.WriteChannelFov(static_cast<std::uint8_t>(quarn::lidar::TextToInt(value)), starts) != 0) {
    throw std::invalid_argument("set channel fov failed");
  }
  ReportSent(catalogue, kFovSetCommand);
  return {kFovSetCommand, {}, {{&channel, value}}};
}

SetRequest PageWriter::Write(ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                             const std::string& set_cmd) const {
  const Command command = ParseCommandText(set_cmd);
  SetRequest request = MakeSetRequest(catalogue, set_cmd);
  const std::vector<std::uint8_t> payload = RequestPayload(command, request.payload);
  qDebug().noquote() << kRun << "(): QueryCommand send cmd:    " << Text(set_cmd);
  qDebug().noquote() << kRun << "(): QueryCommand send payload:" << Hex(payload)
                     << ", length =" << payload.size();
  const ExchangeResult result = QueryTableCommand(client, command, payload);
  if (result) {
    qDebug().noquote() << kRun << "(): QueryCommand SUCCESS, get result =" << Hex(*result);
    ReportSent(catalogue, set_cmd);
    return request;
  }
  qDebug().noquote() << kRun << "(): QueryCommand FAILED, get result =" << Hex({});
  if (set_cmd == kAddressSetCommand && result.error() == quarn::lidar::KtcClient::kNoHeader) return request;
  const std::string warning = "SET [" + set_cmd + "] FAILED";
  targets_.report.Log(warning, "WARNING");
  targets_.report.Error(warning);
  throw std::invalid_argument(set_cmd + " SET  ret_code: " + std::to_string(result.error()));
}

void PageWriter::ReportSent(const ConfigParser& catalogue, const std::string& set_cmd) const {
  std::string names;
  for (const VarInfo* var : catalogue.set_cmd_map().at(set_cmd)) {
    names += (names.empty() ? "" : ", ") + var->var_name;
  }
  targets_.report.Log("Send KTC command [" + set_cmd + "] to set " + names + " success.", "INFO");
}

}  // namespace varkel
