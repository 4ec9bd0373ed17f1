#include "VarkelCore/src/documents/table_reference.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <exception>
#include <set>

namespace varkel {
namespace {

constexpr std::size_t kUnitFrame = 2;  // the length of " (" before a unit; the ")" after it is one shorter

std::string Decimal(float number) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

std::vector<std::string> Values(const VarInfo& var) {
  if (var.range_min != 0 || var.range_max != 0) {
    return {std::to_string(var.range_min) + " to " + std::to_string(var.range_max)};
  }
  std::vector<std::string> values;
  for (const std::int32_t option : var.options) {
    const auto label = var.option_labels.find(option);
    const bool is_labelled = label != var.option_labels.end();
    values.push_back(std::to_string(option) + (is_labelled ? " " + label->second : std::string()));
  }
  return values;
}

std::string Scale(const VarInfo& var) {
  std::string text;
  if (!var.get_cmd.empty() && var.coefficient != 1.0F) text = Decimal(var.coefficient);
  const bool writes_otherwise = var.get_cmd.empty() || var.set_coefficient != var.coefficient;
  if (!var.set_cmd.empty() && writes_otherwise && (var.set_coefficient != 1.0F || !text.empty())) {
    text += (text.empty() ? "" : ", ") + Decimal(var.set_coefficient) + " when written";
  }
  return text;
}

ReferenceRow RowOf(const VarInfo& var) {
  ReferenceRow row;
  row.var = &var;
  if (var.unit.size() > kUnitFrame) row.unit = var.unit.substr(kUnitFrame, var.unit.size() - kUnitFrame - 1);
  row.type = var.var_type;
  const bool tells_length = std::set<std::string>{"string", "DT", "raw"}.contains(var.var_type);
  if (tells_length && var.var_len > 0) row.type += ", " + std::to_string(var.var_len) + " bytes";
  row.values = Values(var);
  row.scale = Scale(var);
  row.is_action = var.component_type == kStandalone || var.component_type == kUpgradeArea;
  return row;
}

std::vector<const VarInfo*> ByPosition(const ConfigParser::VarList& vars, ModulePlace place) {
  std::vector<const VarInfo*> sorted(vars.begin(), vars.end());
  std::ranges::stable_sort(sorted, {}, [place](const VarInfo* var) { return var->module_places.at(place); });
  return sorted;
}

ReferencePage PageOf(const ConfigParser& catalogue, std::size_t module) {
  const auto& titles = catalogue.module_titles()[module];
  ReferencePage page{titles.empty() ? std::string() : titles.front(), {}};
  const auto& groups = catalogue.module_vars()[module];
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (groups[i].empty()) continue;
    ReferenceGroup& group = page.groups.emplace_back(ReferenceGroup{titles[i + 1], {}});
    const ModulePlace place(static_cast<std::int32_t>(module), static_cast<std::int32_t>(i));
    for (const VarInfo* var : ByPosition(groups[i], place)) group.rows.push_back(RowOf(*var));
  }
  return page;
}

ReferencePage PageOfOthers(const ConfigParser& catalogue) {
  std::set<const VarInfo*> shown;
  for (const auto& groups : catalogue.module_vars()) {
    for (const auto& vars : groups) shown.insert(vars.begin(), vars.end());
  }
  ReferenceGroup actions{"Actions and logs", {}};
  ReferenceGroup hidden{"Variables", {}};
  for (const auto& [id, var] : catalogue.var_map()) {
    if (shown.contains(var.get())) continue;
    (var->component_type == kStandalone ? actions : hidden).rows.push_back(RowOf(*var));
  }
  ReferencePage page{"On no page", {}};
  for (ReferenceGroup* group : {&actions, &hidden}) {
    if (!group->rows.empty()) page.groups.push_back(std::move(*group));
  }
  return page;
}

}  // namespace

TableReference MakeReference(const std::string& model, const ConfigParser& catalogue) {
  TableReference reference;
  reference.model = model;
  reference.commands = ListCommands(catalogue);
  reference.variables = catalogue.var_map().size();
  const auto lock = catalogue.LockValues();
  for (std::size_t i = 0; i < catalogue.module_titles().size(); ++i) {
    if (ReferencePage page = PageOf(catalogue, i); !page.groups.empty()) {
      reference.pages.push_back(std::move(page));
    }
  }
  if (ReferencePage others = PageOfOthers(catalogue); !others.groups.empty()) {
    reference.pages.push_back(std::move(others));
  }
  return reference;
}

std::string CommandText(const Command& command) {
  std::array<char, 16> text{};
  if (command.extended_code) {
    std::snprintf(text.data(), text.size(), "0x%08X", *command.extended_code);
  } else {
    std::snprintf(text.data(), text.size(), "0x%02X", command.code);
  }
  return text.data();
}

const WireCommand* FindCommand(const TableReference& reference, const std::string& text) {
  try {
    const std::string key = CommandKey(ParseCommandText(text));
    const auto found = std::ranges::lower_bound(reference.commands, key, {}, &WireCommand::key);
    return found != reference.commands.end() && found->key == key ? &*found : nullptr;
  } catch (const std::exception&) {
    return nullptr;
  }
}

ReferenceFunction ReferenceWriter(const std::string& file_name) {
  if (file_name.ends_with(".html")) return HtmlReference;
  return file_name.ends_with(".md") ? MarkdownReference : nullptr;
}

}  // namespace varkel
