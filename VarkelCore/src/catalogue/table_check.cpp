#include "VarkelCore/src/catalogue/table_check.h"

#include <cstdint>
#include <map>
#include <optional>

namespace varkel {

namespace {

/// Bytes that a value of the type takes on the wire; nothing for types of any length.
std::optional<std::uint32_t> WireSize(const std::string& var_type) {
  static const std::map<std::string, std::uint32_t> sizes = {
      {"IP", 4},   {"MAC", 6},   {"uint8", 1}, {"uint16", 2}, {"uint32", 4},  {"uint64", 8},
      {"int8", 1}, {"int16", 2}, {"int32", 4}, {"int64", 8},  {"float32", 4}, {"double", 8}};
  const auto size = sizes.find(var_type);
  return size == sizes.end() ? std::nullopt : std::optional(size->second);
}

std::string Named(const std::string& set_cmd, const VarInfo& var) {
  return "set command " + set_cmd + ", \"" + var.var_name + "\" (" + var.var_id + "): ";
}

void CheckLength(const std::string& set_cmd, const VarInfo& var, std::vector<std::string>& findings) {
  const auto size = WireSize(var.var_type);
  if (!size || *size == var.var_len) return;
  findings.push_back(Named(set_cmd, var) + var.var_type + " takes " + std::to_string(*size) +
                     " bytes, but VarLen is " + std::to_string(var.var_len));
}

void CheckOrder(const std::string& set_cmd, const VarInfo& var, std::int64_t expected,
                std::vector<std::string>& findings) {
  if (var.set_index == expected) return;
  const std::string found = "SetIndex " + std::to_string(var.set_index);
  if (var.set_index < 0) {
    findings.push_back(Named(set_cmd, var) + "SetIndex is missing");
  } else if (var.set_index < expected) {
    findings.push_back(Named(set_cmd, var) + found + " is taken twice");
  } else {
    findings.push_back(Named(set_cmd, var) + found + " follows " + std::to_string(expected - 1) +
                       ": a field is missing");
  }
}

}  // namespace

std::vector<std::string> CheckSetPayloads(const ConfigParser& catalogue) {
  std::vector<std::string> findings;
  const auto lock = catalogue.LockValues();  // a "Shared Secret Key" changes its length
  for (const auto& [set_cmd, vars] : catalogue.set_cmd_map()) {
    std::int64_t expected = vars.front()->set_index;
    for (const VarInfo* var : vars) {
      CheckLength(set_cmd, *var, findings);
      if (vars.size() > 1) CheckOrder(set_cmd, *var, expected, findings);
      expected = std::int64_t{var->set_index} + 1;
    }
  }
  return findings;
}

}  // namespace varkel
