#include "VarkelCore/src/state/sensor_state.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <algorithm>
#include <unordered_set>

#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/state/json_text.h"

namespace varkel {

namespace {

std::string PlainUnit(const VarInfo& var) {
  constexpr std::size_t kBrackets = 3;  // " (" and ")"
  return var.unit.size() > kBrackets ? var.unit.substr(2, var.unit.size() - kBrackets) : std::string();
}

bool IsAction(const VarInfo& var) {
  return var.component_type == kStandalone || var.component_type == kUpgradeArea;
}

std::unordered_set<std::string> ActionCommands(const ConfigParser& catalogue) {
  std::unordered_set<std::string> commands;
  for (const VarInfo* var : catalogue.standalone_vars()) commands.insert(var->get_cmd);
  for (const auto& [id, var] : catalogue.var_map()) {
    if (IsAction(*var)) commands.insert(var->get_cmd);
  }
  return commands;
}

}  // namespace

std::vector<VarInfo*> StateVars(const ConfigParser& catalogue) {
  const auto actions = ActionCommands(catalogue);
  std::vector<VarInfo*> vars;
  std::unordered_set<const VarInfo*> seen;
  for (std::size_t page = 0; page < catalogue.module_vars().size(); ++page) {
    for (VarInfo* var : ReadableVars(catalogue, static_cast<int>(page))) {
      if (actions.count(var->get_cmd) == 0 && seen.insert(var).second) vars.push_back(var);
    }
  }
  return vars;
}

SensorState EmptyState(const Model& model) {
  SensorState state;
  state.model = Utf8(model.name);
  state.table = TableFingerprint(model.catalogue->path());
  state.time = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toStdString();
  state.tool = ToolVersion();
  return state;
}

StateValue MakeStateValue(const ConfigParser& catalogue, const VarInfo& var, const std::string& text,
                          std::string raw) {
  StateValue value{var.var_id,     Utf8(var.var_name), {}, {}, Utf8(PlainUnit(var)), Utf8(text),
                   std::move(raw), var.timer_update};
  if (!var.module_places.empty()) {
    const auto [page, group] = var.module_places.begin()->first;
    const auto& titles = catalogue.module_titles();
    if (page >= 0 && static_cast<std::size_t>(page) < titles.size()) {
      const auto& page_titles = titles[static_cast<std::size_t>(page)];
      const auto group_title = static_cast<std::size_t>(group) + 1;
      if (!page_titles.empty()) value.page = Utf8(page_titles.front());
      if (group >= 0 && group_title < page_titles.size()) value.group = Utf8(page_titles[group_title]);
    }
  }
  return value;
}

SensorState DefaultState(const Model& model) {
  SensorState state = EmptyState(model);
  for (const VarInfo* var : StateVars(*model.catalogue)) {
    state.values.push_back(MakeStateValue(*model.catalogue, *var, var->default_val, {}));
  }
  return state;
}

std::string TableFingerprint(const std::string& path) {
  QFile file(QString::fromStdString(path));
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) return {};
  return hash.result().toHex().toStdString();
}

std::string ToolVersion() {
  return VARKEL_VERSION;
}

}  // namespace varkel
