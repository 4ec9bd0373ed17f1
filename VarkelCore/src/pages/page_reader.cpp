#include "VarkelCore/src/pages/page_reader.h"

#include <QDebug>
#include <QString>
#include <array>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/values/value_text.h"
#include "libquarn/Platform/src/logger.h"

namespace varkel {

namespace {

constexpr char kSourceFile[] = "VarkelCore/src/varkel_manager";
constexpr std::uint8_t kFovReadCommand = 0x23;

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

/// Faults of the table, told to the log file: the sensor's reply does not fit the declared type.
void LogFault(ValueFault fault, const VarInfo& var) {
  switch (fault) {
    case ValueFault::kMacSize:
      QUARN_LOG(log_lib::kError, "MAC address size is less than 6, please check your config file");
      break;
    case ValueFault::kVersionSize:
      QUARN_LOG(log_lib::kError, "HWVER size is not qual to 16, please check your config file");
      break;
    case ValueFault::kUnsupportedType:
      QUARN_LOG(log_lib::kError, "var_type not support: %s", var.var_type.c_str());
      break;
    case ValueFault::kEmpty:
    case ValueFault::kNumberSize:
      QUARN_LOG(log_lib::kError, "%s: %u bytes are no %s, please check your config file",
                var.var_name.c_str(), var.var_len, var.var_type.c_str());
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

bool PageReader::GetInfoFromLidarWithSameCmd(ConfigParser& catalogue, quarn::lidar::KtcClient& client,
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
  if (fov == FovRead::kTable && !command.extended_code && command.code == kFovReadCommand) {
    return ReadFov(catalogue, client, first);
  }
  std::vector<std::uint8_t> reply;
  return Query(client, first, kOperation, reply) && StoreReply(catalogue, group, reply);
}

bool PageReader::StoreReply(ConfigParser& catalogue, const std::vector<VarInfo*>& group,
                            std::span<const std::uint8_t> reply) const {
  bool refreshed = false;
  for (VarInfo* var : group) refreshed |= updateSingleVarFromOutput(catalogue, *var, reply);
  return refreshed;
}

bool PageReader::GetInfoFromLidar(ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                  VarInfo& var) const {
  std::vector<std::uint8_t> reply;
  return Query(client, var, "VarkelManager::GetInfoFromLidar", reply) &&
         updateSingleVarFromOutput(catalogue, var, reply);
}

std::size_t PageReader::ReadGroups(ConfigParser& catalogue, quarn::lidar::KtcClient& client,
                                   const std::vector<ReadGroup>& groups, const char* operation,
                                   const std::function<bool(bool answered)>& go_on) const {
  std::size_t read = 0;
  bool answered = true;
  for (const ReadGroup& group : groups) {
    if (!go_on(answered)) break;
    try {
      answered = GetInfoFromLidarWithSameCmd(catalogue, client, group.vars, FovRead::kTable);
    } catch (const std::exception& error) {
      answered = false;
      std::cout << operation << "(): ERROR " << error.what() << ". get_cmd and payload = " << group.key
                << std::endl;
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
    qDebug() << operation << "(): try get" << Text(first.var_name)
             << "FAILED, cmd sent =" << Text(first.get_cmd) << "-- QueryCommand()'s ret =" << -1;
    return false;
  }
  reply = std::move(*result);
  if (reply.empty()) {
    qDebug() << operation << "(): try get" << Text(first.var_name)
             << ", but get no return msg from lidar. cmd sent = " << Text(first.get_cmd);
    return false;
  }
  return true;
}

bool PageReader::ReadFov(ConfigParser& catalogue, quarn::lidar::KtcClient& client, VarInfo& first) const {
  const FovTable::Angles before = targets_.fov.Get();
  std::array<float, FovTable::kSectors> starts{};
  std::array<float, FovTable::kSectors> ends{};
  for (std::size_t i = 0; i < FovTable::kSectors; ++i) {
    starts.at(i) = before.at(i);
    ends.at(i) = before.at(FovTable::kSectors + i);
  }
  int count = 0;
  const int result = client.QueryMultiFov(starts, ends, count);
  if (result != 0) {
    qDebug() << "VarkelManager::GetInfoFromLidarWithSameCmd"
             << "(): try get" << Text(first.var_name)
             << "FAILED, cmd sent = 0x23 -- QueryCommand()'s ret =" << result;
    return false;
  }
  // Start angles that wait to be saved are the user's: only a sensor that confirmed them replaces them.
  if (!targets_.edits.IsPending(kFovSetCommand)) targets_.fov.SetSectors(starts, ends);
  Store(catalogue, first, std::to_string(count));
  targets_.fov_changed();
  return true;
}

bool PageReader::updateSingleVarFromOutput(ConfigParser& catalogue, VarInfo& var,
                                           std::span<const std::uint8_t> reply) const {
  static const std::string kOperation = "VarkelManager::updateSingleVarFromOutput";
  if (reply.empty()) throw std::invalid_argument(kOperation + "(): Error with the input 'output'");
  if (var.var_type.empty()) throw std::invalid_argument(kOperation + "(): Error with the input var_info");

  std::pair<std::uint32_t, std::uint32_t> field;
  if (!catalogue.GetVarPosOffset(var.get_cmd, var, static_cast<std::uint32_t>(reply.size()), field)) {
    targets_.report.Log("get <start_pos, offset> failed!", "ERROR");
    return false;
  }
  if (field.first > reply.size() || field.second > reply.size() - field.first) {
    targets_.report.Log("get var pos offset failed!", "ERROR");
    return false;
  }
  ValueText value = BytesToText(var.var_type, reply.subspan(field.first, field.second), var.coefficient);
  if (value.fault != ValueFault::kNone) {
    LogFault(value.fault, var);
    return false;
  }
  Store(catalogue, var, std::move(value.text));
  return true;
}

void PageReader::Store(ConfigParser& catalogue, VarInfo& var, std::string text) const {
  const auto lock = catalogue.LockValues();
  if (!targets_.edits.IsEdited(var.var_id)) var.current_val = std::move(text);
}

}  // namespace varkel
