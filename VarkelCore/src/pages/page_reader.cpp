#include "VarkelCore/src/pages/page_reader.h"

#include <QString>
#include <algorithm>
#include <array>
#include <exception>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/tasks/diagnostics.h"
#include "VarkelCore/src/values/value_text.h"
#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/Platform/src/logger.h"

namespace varkel {

namespace {

// The log file lists faults of the table under the controller's source file and the operation's name,
// whichever file logs them.
constexpr char kSourceFile[] = "VarkelCore/src/varkel_manager";
constexpr char kConversion[] =
    "bool VarkelManager::updateSingleVarFromOutput(VarInfo&, std::uint8_t, std::span<const std::uint8_t>, "
    "std::vector<std::uint8_t>&, bool)";

void LogError(const std::string& text) {
  log_lib::Logger::GetInstance().AddToQueue(log_lib::kError, kSourceFile, 0, kConversion, "%s", text.c_str());
}

/// Logs a fault of the table: the sensor's reply does not fit the declared type.
void LogFault(ValueFault fault, const VarInfo& var, std::size_t size) {
  switch (fault) {
    case ValueFault::kMacSize:
      LogError("MAC address size is less than 6, please check your config file");
      break;
    case ValueFault::kVersionSize:
      LogError("HWVER size is not qual to 16, please check your config file");
      break;
    case ValueFault::kUnsupportedType:
      LogError("var_type not support: " + var.var_type);
      break;
    case ValueFault::kEmpty:
    case ValueFault::kNumberSize:
      LogError(var.var_name + ": " + std::to_string(size) + " bytes are not a valid " + var.var_type +
               ", please check your config file");
      break;
    case ValueFault::kNone:
      break;
  }
}

}  // namespace

std::vector<ReadGroup> GroupByGetCommand(const std::vector<VarInfo*>& vars) {
  std::vector<ReadGroup> groups;
  std::unordered_map<std::string, std::size_t> group_of;
  for (VarInfo* var : vars) {
    if (var->get_cmd.empty()) continue;
    std::string key = var->get_cmd + " " + var->get_cmd_payload;
    const auto [place, is_new] = group_of.try_emplace(key, groups.size());
    if (is_new) groups.push_back({std::move(key), {}});
    groups[place->second].vars.push_back(var);
  }
  return groups;
}

std::vector<VarInfo*> ReadableVars(const ConfigParser& catalogue, int module) {
  std::vector<VarInfo*> vars;
  const auto& modules = catalogue.module_vars();
  if (module < 0 || static_cast<std::size_t>(module) >= modules.size()) return vars;
  for (const auto& group : modules[static_cast<std::size_t>(module)]) {
    for (VarInfo* var : group) {
      if (!var->get_cmd.empty()) vars.push_back(var);
    }
  }
  return vars;
}

bool PageReader::GetInfoFromLidarWithSameCmd(Model& model, quarn::lidar::KtcClient& client,
                                             const std::vector<VarInfo*>& group, FovRead fov) const {
  static constexpr char kOperation[] = "VarkelManager::GetInfoFromLidarWithSameCmd";
  if (group.empty()) {
    throw std::invalid_argument(std::string(kOperation) + "(): ERROR with the input v_p_vars -- size == 0");
  }
  VarInfo& first = *group.front();
  for (const VarInfo* var : group) {
    if (var->get_cmd != first.get_cmd) {
      throw std::invalid_argument(std::string(kOperation) +
                                  "(): ERROR with the input v_p_vars -- They must use the same get cmd.");
    }
  }
  const Command command = ParseCommandText(first.get_cmd);
  if (fov == FovRead::kTable && !command.extended_code && command.code == quarn::lidar::kQueryMultiFovCmd) {
    return ReadFov(model, client, first);
  }
  const ValueStore::Moment asked = model.values.Now();
  std::vector<std::uint8_t> reply;
  return Query(client, first, kOperation, reply) && StoreReply(model, group, reply, asked);
}

bool PageReader::StoreReply(Model& model, const std::vector<VarInfo*>& group,
                            std::span<const std::uint8_t> reply, ValueStore::Moment asked) const {
  std::vector<Reading> readings;
  readings.reserve(group.size());
  for (VarInfo* var : group) {
    auto reading = updateSingleVarFromOutput(*model.catalogue, *var, reply);
    if (reading) readings.push_back(std::move(*reading));
  }
  const bool refreshed = !readings.empty();
  model.values.Read(std::move(readings), asked);
  return refreshed;
}

bool PageReader::GetInfoFromLidar(Model& model, quarn::lidar::KtcClient& client, VarInfo& var) const {
  const ValueStore::Moment asked = model.values.Now();
  std::vector<std::uint8_t> reply;
  return Query(client, var, "VarkelManager::GetInfoFromLidar", reply) &&
         StoreReply(model, {&var}, reply, asked);
}

std::size_t PageReader::ReadGroups(Model& model, quarn::lidar::KtcClient& client,
                                   const std::vector<ReadGroup>& groups, const char* operation,
                                   const std::function<bool(bool answered)>& go_on) const {
  std::size_t read = 0;
  bool answered = true;
  for (const ReadGroup& group : groups) {
    if (!go_on(answered)) break;
    try {
      answered = GetInfoFromLidarWithSameCmd(model, client, group.vars, FovRead::kTable);
    } catch (const std::exception& error) {
      answered = false;
      TraceLine(std::string(operation) + "(): ERROR " + error.what() +
                ". get_cmd and payload = " + group.key);
    }
    ++read;
  }
  return read;
}

bool PageReader::Query(quarn::lidar::KtcClient& client, const VarInfo& first, const char* operation,
                       std::vector<std::uint8_t>& reply) const {
  const Command command = ParseCommandText(first.get_cmd);
  const std::vector<std::uint8_t> request = RequestPayload(command, first.get_cmd_payload_bytes);
  ExchangeResult result = QueryTableCommand(client, command, request);
  if (!result) {
    DebugLine(operation, "(): try get", QString::fromStdString(first.var_name),
              "FAILED, cmd sent =", QString::fromStdString(first.get_cmd), "-- QueryCommand()'s ret =", -1);
    return false;
  }
  reply = std::move(*result);
  if (reply.empty()) {
    DebugLine(operation, "(): try get", QString::fromStdString(first.var_name),
              ", but get no return msg from lidar. cmd sent = ", QString::fromStdString(first.get_cmd));
    return false;
  }
  return true;
}

bool PageReader::ReadFov(Model& model, quarn::lidar::KtcClient& client, VarInfo& first) const {
  const ValueStore::Moment asked = model.values.Now();
  FovAngles angles = model.values.ReportedFov();  // angles that the reply lacks keep their values
  std::array<float, kFovSectors> starts{};
  std::array<float, kFovSectors> ends{};
  std::copy_n(angles.begin(), kFovSectors, starts.begin());
  std::copy_n(angles.begin() + kFovSectors, kFovSectors, ends.begin());
  int count = 0;
  const int result = client.QueryMultiFov(starts, ends, count);
  if (result != 0) {
    DebugLine("VarkelManager::GetInfoFromLidarWithSameCmd", "(): try get",
              QString::fromStdString(first.var_name),
              "FAILED, cmd sent = 0x23 -- QueryCommand()'s ret =", result);
    return false;
  }
  std::copy_n(starts.begin(), kFovSectors, angles.begin());
  std::copy_n(ends.begin(), kFovSectors, angles.begin() + kFovSectors);
  model.values.ReadFov(angles, asked, static_cast<std::size_t>(count));
  model.values.Read({{&first, std::to_string(count), {}}}, asked);
  targets_.fov_changed();
  return true;
}

std::optional<Reading> PageReader::updateSingleVarFromOutput(ConfigParser& catalogue, VarInfo& var,
                                                             std::span<const std::uint8_t> reply) const {
  static const std::string kOperation = "VarkelManager::updateSingleVarFromOutput";
  if (reply.empty()) throw std::invalid_argument(kOperation + "(): Error with the input 'output'");
  if (var.var_type.empty()) throw std::invalid_argument(kOperation + "(): Error with the input var_info");

  std::pair<std::uint32_t, std::uint32_t> field;
  if (!catalogue.GetVarPosOffset(var.get_cmd, var, static_cast<std::uint32_t>(reply.size()), field)) {
    targets_.report.Log("get <start_pos, offset> failed!", "ERROR");
    return std::nullopt;
  }
  if (field.first > reply.size() || field.second > reply.size() - field.first) {
    targets_.report.Log("get var pos offset failed!", "ERROR");
    return std::nullopt;
  }
  const auto raw = reply.subspan(field.first, field.second);
  ValueText value = BytesToText(var.var_type, raw, var.coefficient);
  if (value.fault != ValueFault::kNone) {
    LogFault(value.fault, var, raw.size());
    return std::nullopt;
  }
  return Reading{&var, std::move(value.text), {raw.begin(), raw.end()}};
}

}  // namespace varkel
