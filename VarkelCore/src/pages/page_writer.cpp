#include "VarkelCore/src/pages/page_writer.h"

#include <QString>
#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/tasks/diagnostics.h"
#include "VarkelCore/src/values/exchange_decoder.h"
#include "VarkelCore/src/values/str_parser.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

constexpr char kRun[] = "VarkelManager::Run";

QString HexBytes(std::span<const std::uint8_t> bytes) {
  return QString::fromStdString(quarn::lidar::HexText(bytes));
}

/// False if the field is beyond the size of any request: lengths in a table must not make the payload grow
/// without bound.
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

std::vector<std::uint8_t> CodecBytes(const VarInfo& var, const std::string& value) {
  if (value.empty()) {
    throw std::invalid_argument("Unknown error with this var: It has no current_val. var_name = " +
                                var.var_name);
  }
  const std::unique_ptr<StrParser> codec = MakeStrParser(var.var_type);
  if (!codec) {
    PlainDebugLine(kRun, "(): This var_type", "\"" + QString::fromStdString(var.var_type) + "\"",
                   "is not supported currently.");
    PlainDebugLine("strParser == nullptr, var_name:" + QString::fromStdString(var.var_name) + ", var_type:" +
                   QString::fromStdString(var.var_type) + ", current_val:" + QString::fromStdString(value));
    throw std::invalid_argument("Error with var type");
  }
  return codec->ParseToBytes(value, var.set_coefficient);
}

SentField FieldOf(const Model& model, VarInfo& var) {
  ValueStore::Field field = model.values.FieldToSend(var);
  std::vector<std::uint8_t> bytes = CodecBytes(var, field.text);
  if (!field.raw.empty() && var.coefficient == var.set_coefficient) bytes = std::move(field.raw);
  return {&var, std::move(field.text), std::move(bytes)};
}

/// The set commands of a page that carry edits, in page order; empty if there is no such page.
std::vector<std::string> PendingCommands(const Model& model, int module) {
  std::vector<std::string> commands;
  std::unordered_set<std::string> seen;
  const auto& modules = model.catalogue->module_vars();
  if (module < 0 || !std::cmp_less(module, modules.size())) return commands;
  for (const auto& group : modules[static_cast<std::size_t>(module)]) {
    for (const VarInfo* var : group) {
      if (var->set_cmd.empty() || seen.count(var->set_cmd) != 0 || !model.values.IsPending(var->set_cmd)) {
        continue;
      }
      seen.insert(var->set_cmd);
      commands.push_back(var->set_cmd);
    }
  }
  return commands;
}

/// The variables carried by the commands that are neither edited nor reported since `moment`, each once.
std::vector<std::string> NamesNotRead(const Model& model, const std::vector<std::string>& set_commands,
                                      ValueStore::Moment moment) {
  std::vector<std::string> names;
  std::unordered_set<const VarInfo*> seen;
  for (const std::string& set_cmd : set_commands) {
    const bool lacks_angles = set_cmd == kFovSetCommand && !model.values.IsFovRead();
    const auto& carried = model.catalogue->set_cmd_map().at(set_cmd);
    for (const VarInfo* var : carried) {
      const bool has_value = model.values.IsEdited(*var) || model.values.IsRead(*var, moment);
      const bool angles = lacks_angles && var == carried.front();
      if (!var->get_cmd.empty() && (!has_value || angles) && seen.insert(var).second) {
        names.push_back(var->var_name);
      }
    }
  }
  return names;
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

WritePlan PlanWrite(const Model& model, int module) {
  WritePlan plan;
  plan.commands = PendingCommands(model, module);
  std::vector<VarInfo*> to_refresh;
  std::unordered_set<const VarInfo*> seen;
  for (const std::string& set_cmd : plan.commands) {
    for (VarInfo* carried : model.catalogue->set_cmd_map().at(set_cmd)) {
      if (!carried->get_cmd.empty() && seen.insert(carried).second) to_refresh.push_back(carried);
    }
  }
  plan.refresh = GroupByGetCommand(to_refresh);
  std::stable_partition(plan.commands.begin(), plan.commands.end(),
                        [](const std::string& set_cmd) { return set_cmd != kAddressSetCommand; });
  return plan;
}

bool HasPendingCommands(const Model& model, int module) {
  return !PendingCommands(model, module).empty();
}

std::vector<std::string> UnreadFields(const Model& model, int module) {
  return NamesNotRead(model, PendingCommands(model, module), 0);
}

SetRequest MakeSetRequest(Model& model, const std::string& set_cmd) {
  SetRequest request{{set_cmd, {}, std::nullopt}, {}};
  for (VarInfo* var : model.catalogue->set_cmd_map().at(set_cmd)) {
    if (var->get_cmd.empty() && var->var_type != "raw") {
      throw std::invalid_argument(
          "There are undefined cases in the csv config file where there is a line with 'set' and no 'get', "
          "but the var_type is not 'raw'.");
    }
    SentField sent = FieldOf(model, *var);
    std::pair<std::uint32_t, std::uint32_t> place;
    const auto written = static_cast<std::uint32_t>(request.payload.size());
    if (!model.catalogue->GetVarPosOffset(set_cmd, var->var_id, written, place) ||
        !Append(request.payload, place.first, place.second, sent.bytes)) {
      throw std::invalid_argument("Error with var position, var_name = " + var->var_name);
    }
    request.command.fields.push_back(std::move(sent));
  }
  return request;
}

SavedEdits PageWriter::Run(Model& model, quarn::lidar::KtcClient& client, int module) const {
  try {
    SavedEdits saved = WriteAll(model, client, module);
    targets_.report.Success(
        "Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will need to "
        "restart the lidar for it to work.");
    return saved;
  } catch (const std::exception& error) {
    PlainDebugLine(kRun, "(): Caught Exception: ", error.what());
    targets_.report.Error("Set Failed: " + std::string(error.what()));
    return {};
  }
}

SavedEdits PageWriter::WriteAll(Model& model, quarn::lidar::KtcClient& client, int module) const {
  const WritePlan plan = PlanWrite(model, module);
  Refresh(model, client, plan);
  std::vector<SentCommand> sent;
  SavedEdits saved;
  for (const std::string& set_cmd : plan.commands) {
    const ValueStore::Moment asked = model.values.Now();
    sent.push_back(set_cmd == kFovSetCommand ? WriteFov(model, client) : Write(model, client, set_cmd));
    for (const SentField& field : sent.back().fields) {
      if (model.values.IsEdited(*field.var)) saved.vars.push_back(field.var);
    }
    saved.fov = saved.fov || (sent.back().fov && model.values.IsFovEdited());
    model.values.Sent(sent.back(), asked);
  }
  model.values.Saved(sent);
  return saved;
}

void PageWriter::Refresh(Model& model, quarn::lidar::KtcClient& client, const WritePlan& plan) const {
  const ValueStore::Moment start = model.values.Now();
  for (const ReadGroup& group : plan.refresh) {
    targets_.reader.GetInfoFromLidarWithSameCmd(model, client, group.vars, FovRead::kOrdinary);
  }
  const std::vector<std::string> names = NamesNotRead(model, plan.commands, start);
  if (names.empty()) return;
  targets_.report.Log(
      "The sensor did not report these before the save, so their last values are written: " + Joined(names),
      "WARNING");
}

SentCommand PageWriter::WriteFov(Model& model, quarn::lidar::KtcClient& client) const {
  VarInfo& channel = *model.catalogue->set_cmd_map().at(kFovSetCommand).front();
  const std::string value = model.catalogue->CurrentValue(channel);
  const FovAngles angles = model.values.Fov();
  std::array<float, kFovSectors> starts{};
  std::copy_n(angles.begin(), starts.size(), starts.begin());
  const auto channel_byte = static_cast<std::uint8_t>(quarn::lidar::TextToInt(value));
  if (client.WriteChannelFov(channel_byte, starts) != 0) {
    model.values.Refused(kFovSetCommand, client.LastReturnCode());
    ReportRefused(model, kFovSetCommand, {}, client.LastReturnCode());
    throw std::invalid_argument("set channel fov failed");
  }
  ReportSent(*model.catalogue, kFovSetCommand);
  return {kFovSetCommand, {{&channel, value, {channel_byte}}}, angles};
}

SentCommand PageWriter::Write(Model& model, quarn::lidar::KtcClient& client,
                              const std::string& set_cmd) const {
  const Command command = ParseCommandText(set_cmd);
  SetRequest request = MakeSetRequest(model, set_cmd);
  const std::vector<std::uint8_t> payload = RequestPayload(command, request.payload);
  PlainDebugLine(kRun, "(): QueryCommand send cmd:    ", QString::fromStdString(set_cmd));
  PlainDebugLine(kRun, "(): QueryCommand send payload:", HexBytes(payload), ", length =", payload.size());
  const ExchangeResult result = QueryTableCommand(client, command, payload);
  if (result) {
    PlainDebugLine(kRun, "(): QueryCommand SUCCESS, get result =", HexBytes(*result));
    ReportSent(*model.catalogue, set_cmd);
    return std::move(request.command);
  }
  PlainDebugLine(kRun, "(): QueryCommand FAILED, get result =", HexBytes({}));
  // The request was sent, but the sensor moved to its new address before it could answer.
  const bool is_moved = set_cmd == kAddressSetCommand && result.error() == quarn::lidar::KtcClient::kNoHeader;
  if (is_moved) return std::move(request.command);
  model.values.Refused(set_cmd, result.error());
  const std::string warning = "SET [" + set_cmd + "] FAILED";
  targets_.report.Log(warning, "WARNING");
  targets_.report.Error(warning);
  ReportRefused(model, set_cmd, payload, result.error());
  throw std::invalid_argument(set_cmd + " SET  ret_code: " + std::to_string(result.error()));
}

void PageWriter::ReportSent(const ConfigParser& catalogue, const std::string& set_cmd) const {
  std::vector<std::string> names;
  for (const VarInfo* var : catalogue.set_cmd_map().at(set_cmd)) names.push_back(var->var_name);
  targets_.report.Log("Send KTC command [" + set_cmd + "] to set " + Joined(names) + " success.", "INFO");
}

/// The notice names only the command; this log line says what it would have written.
void PageWriter::ReportRefused(const Model& model, const std::string& set_cmd,
                               std::span<const std::uint8_t> payload, int code) const {
  const ExchangeDecoder decoder(model.catalogue);
  const std::string what = decoder.CommandName(ParseCommandText(set_cmd).code, payload);
  targets_.report.Log("The command [" + set_cmd + "] to " + what +
                          (code > 0 ? " was refused with code " + std::to_string(code)
                                    : " got no usable reply (" + std::to_string(code) + ")"),
                      "WARNING");
}

}  // namespace varkel
