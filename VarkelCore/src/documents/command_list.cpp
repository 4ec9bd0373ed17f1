#include "VarkelCore/src/documents/command_list.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <map>

namespace varkel {
namespace {

class CommandMap {
 public:
  void Add(const std::map<std::string, ConfigParser::VarList>& lists, bool writes) {
    for (const auto& [text, vars] : lists) {
      Command code;
      try {
        code = ParseCommandText(text);
      } catch (const std::exception&) {
        continue;  // reported by the linter
      }
      const std::string key = CommandKey(code);
      WireCommand& command = commands_[key];
      command.command = code;
      command.key = key;
      for (const VarInfo* var : vars) AddField(command, *var, writes);
    }
  }

  std::vector<WireCommand> Take() {
    std::vector<WireCommand> list;
    for (auto& [key, command] : commands_) {
      for (auto* fields : {&command.read, &command.written}) {
        std::ranges::stable_sort(*fields, {}, &CommandField::position);
      }
      list.push_back(std::move(command));
    }
    return list;
  }

 private:
  static void AddField(WireCommand& command, const VarInfo& var, bool writes) {
    command.vars.push_back(&var);
    command.has_angles = command.has_angles || var.component_type == kFieldOfView;
    command.is_upgrade = command.is_upgrade || var.component_type == kUpgradeArea;
    CommandField field{&var, writes ? var.set_start_pos : var.get_start_pos, var.var_len};
    if (writes && command.command.extended_code) field.position += kExtendedCodeSize;
    if (TakesWholePayload(var.var_name)) {
      field.length.reset();
    } else if (var.var_len == 0) {
      return;
    }
    (writes ? command.written : command.read).push_back(field);
  }

  std::map<std::string, WireCommand> commands_;
};

}  // namespace

std::string CommandKey(const Command& command) {
  std::array<char, 12> text{};
  if (command.extended_code) {
    std::snprintf(text.data(), text.size(), "ff%08x", *command.extended_code);
  } else {
    std::snprintf(text.data(), text.size(), "%02x", command.code);
  }
  return text.data();
}

std::string WireCommand::Name() const {
  const std::string& first = vars.front()->var_name;
  if (vars.size() == 1) return first;
  return first + " and " + std::to_string(vars.size() - 1) + " more";
}

std::vector<WireCommand> ListCommands(const ConfigParser& catalogue) {
  const auto lock = catalogue.LockValues();
  CommandMap commands;
  commands.Add(catalogue.get_cmd_map(), false);
  commands.Add(catalogue.set_cmd_map(), true);
  return commands.Take();
}

std::optional<std::uint32_t> PayloadSize(const std::vector<CommandField>& fields) {
  std::optional<std::uint32_t> size;
  for (const CommandField& field : fields) {
    if (!field.length) return std::nullopt;
    size = std::max(size.value_or(0), field.position + *field.length);
  }
  return size;
}

}  // namespace varkel
