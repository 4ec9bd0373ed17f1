#include "simulator/src/command_action.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace varkel::sim {
namespace {

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

CommandAction ActionOfName(const std::string& var_name) {
  const std::string name = LowerCase(var_name);
  if (name == "restart") return CommandAction::kRestart;
  if (name == "reset") return CommandAction::kReset;
  if (name == "operation log") return CommandAction::kOperationLog;
  return name.ends_with("log") ? CommandAction::kLog : CommandAction::kAcknowledge;
}

bool ShowsAValue(const VarInfo* var) {
  return var->component_type != kStandalone && var->component_type != kUpgradeArea;
}

CommandAction ActionOf(const ConfigParser::VarList& vars, bool takes_packages) {
  if (vars.empty() || std::any_of(vars.begin(), vars.end(), ShowsAValue)) return CommandAction::kNone;
  const VarInfo& var = *vars.front();
  if (var.component_type == kStandalone) return ActionOfName(var.var_name);
  return takes_packages ? CommandAction::kUpgrade : CommandAction::kAcknowledge;
}

}  // namespace

CommandAction ActionOfReads(const ConfigParser::VarList& vars) {
  // An upgrade row may name its only command as a get command.
  return ActionOf(vars, !vars.empty() && vars.front()->set_cmd.empty());
}

CommandAction ActionOfWrites(const ConfigParser::VarList& vars) {
  return ActionOf(vars, true);
}

}  // namespace varkel::sim
