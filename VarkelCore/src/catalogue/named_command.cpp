#include "VarkelCore/src/catalogue/named_command.h"

namespace varkel {

const VarInfo* FindNamed(const ConfigParser& catalogue, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (const VarInfo* var = catalogue.FindByName(name)) return var;
  }
  return nullptr;
}

const std::string& ActionCommandText(const VarInfo& var) {
  return var.get_cmd.empty() ? var.set_cmd : var.get_cmd;
}

std::string UpgradeCommandText(const VarInfo& var) {
  if (!var.set_cmd.empty()) return var.set_cmd;
  return var.component_type == kUpgradeArea ? var.get_cmd : std::string();
}

ActionRequest MakeActionRequest(const VarInfo& var, std::initializer_list<std::uint8_t> extra) {
  const Command command = ParseCommandText(ActionCommandText(var));
  std::vector<std::uint8_t> payload = var.get_cmd_payload_bytes;
  payload.insert(payload.end(), extra);
  return {command, RequestPayload(command, payload)};
}

}  // namespace varkel
