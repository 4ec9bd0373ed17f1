#include "VarkelCore/src/pages/page_description.h"

#include <QDateTime>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

namespace varkel {

namespace {

/// The switch half of a switch row is its own switch: its position is the one that it switches.
bool IsRow(const VarInfo& var) {
  return !var.has_switch;
}

std::vector<std::size_t> RowsByPosition(const ConfigParser::VarList& group, const ModulePlace& place) {
  const auto position = [&](std::size_t index) {
    const auto found = group[index]->module_places.find(place);
    return found == group[index]->module_places.end() ? 0 : found->second;
  };
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < group.size(); ++i) {
    if (IsRow(*group[i])) rows.push_back(i);
  }
  std::stable_sort(rows.begin(), rows.end(),
                   [&](std::size_t a, std::size_t b) { return position(a) < position(b); });
  return rows;
}

bool EndsInLog(const std::string& name) {
  return QString::fromStdString(name).endsWith(QStringLiteral("log"), Qt::CaseInsensitive);
}

bool IsOperationLog(const std::string& name) {
  return name == "Operation Log" || name == "operation log";
}

}  // namespace

QVariantList PageTitles(const ConfigParser& catalogue) {
  QVariantList titles;
  for (const auto& module : catalogue.module_titles()) {
    titles.append(module.empty() ? QString() : QString::fromStdString(module.front()));
  }
  return titles;
}

std::vector<PageRow> RowsOfPage(const ConfigParser& catalogue, int page) {
  std::vector<PageRow> rows;
  const auto& modules = catalogue.module_vars();
  const auto m = static_cast<std::size_t>(page);
  if (page < 0 || m >= modules.size()) return rows;
  for (std::size_t g = 0; g < modules[m].size(); ++g) {
    const int group = static_cast<int>(g);
    rows.push_back({QString::fromStdString(catalogue.module_titles()[m][g + 1]), static_cast<int>(kTwoTexts),
                    group, -1});
    for (const std::size_t index : RowsByPosition(modules[m][g], {page, group})) {
      const VarInfo& var = *modules[m][g][index];
      rows.push_back({QString::fromStdString(var.var_name + var.unit), var.component_type, group,
                      static_cast<int>(index)});
    }
  }
  return rows;
}

QVariantList PageRows(const ConfigParser& catalogue) {
  QVariantList pages;
  for (int page = 0; std::cmp_less(page, catalogue.module_vars().size()); ++page) {
    QVariantList rows;
    for (const PageRow& row : RowsOfPage(catalogue, page)) {
      rows.append(QVariant(QVariantList{row.label, row.kind, page, row.group, row.index}));
    }
    pages.append(QVariant(rows));
  }
  return pages;
}

QVariantList AngleTexts(const FovAngles& angles) {
  QVariantList texts;
  for (const float degrees : angles) texts.append(QString::fromStdString(AngleText(degrees)));
  return texts;
}

QVariantList OptionValues(const VarInfo& var) {
  QVariantList values;
  for (const std::int32_t option : var.options) values.append(option);
  return values;
}

QVariantList OptionLabels(const VarInfo& var) {
  QVariantList labels;
  for (const std::int32_t option : var.options) {
    const auto label = var.option_labels.find(option);
    labels.append(label == var.option_labels.end() ? QString::number(option)
                                                   : QString::fromStdString(label->second));
  }
  return labels;
}

QString ShownText(const VarInfo& var, const std::string& text) {
  for (const auto& [option, label] : var.option_labels) {
    if (std::to_string(option) == text) return QString::fromStdString(label);
  }
  return QString::fromStdString(text);
}

QString IsoTime(const std::optional<ValueStore::Time>& time) {
  if (!time) return {};
  const auto since_epoch = std::chrono::duration_cast<std::chrono::milliseconds>(time->time_since_epoch());
  return QDateTime::fromMSecsSinceEpoch(since_epoch.count(), Qt::UTC).toString(Qt::ISODateWithMs);
}

QVariantMap VariableMap(const Model& model, const VarInfo& var) {
  const ValueStore::Shown shown = model.values.Show(var);
  return {
      {QStringLiteral("var_id"), QString::fromStdString(var.var_id)},
      {QStringLiteral("get_cmd"), QString::fromStdString(var.get_cmd)},
      {QStringLiteral("set_cmd"), QString::fromStdString(var.set_cmd)},
      {QStringLiteral("var_type"), QString::fromStdString(var.var_type)},
      {QStringLiteral("var_name"), QString::fromStdString(var.var_name)},
      {QStringLiteral("unit"), QString::fromStdString(var.unit)},
      {QStringLiteral("get_start_pos"), var.get_start_pos},
      {QStringLiteral("set_start_pos"), shown.set_start_pos},
      {QStringLiteral("offset"), shown.length},
      {QStringLiteral("permission"), var.permission},
      {QStringLiteral("default_val"), QString::fromStdString(var.default_val)},
      {QStringLiteral("current_val"), QString::fromStdString(shown.text)},
      {QStringLiteral("switch_index"), QString::fromStdString(shown.switch_text)},
      {QStringLiteral("visible"), IsRow(var)},
      {QStringLiteral("option_num"), var.option_num},
      {QStringLiteral("type"), var.component_type},
      {QStringLiteral("varname_value_to_option"), OptionLabels(var)},
      {QStringLiteral("options"), OptionValues(var)},
      {QStringLiteral("edited"), shown.edited},
      {QStringLiteral("range_min"), var.range_min},
      {QStringLiteral("range_max"), var.range_max},
      {QStringLiteral("origin"), QString::fromLatin1(OriginName(shown.origin))},
      {QStringLiteral("read_time"), IsoTime(shown.read_time)},
  };
}

QVariantList VariableMaps(const Model& model) {
  QVariantList modules;
  for (const auto& module : model.catalogue->module_vars()) {
    QVariantList groups;
    for (const auto& group : module) {
      QVariantList vars;
      for (const VarInfo* var : group) vars.append(VariableMap(model, *var));
      groups.append(QVariant(vars));
    }
    modules.append(QVariant(groups));
  }
  return modules;
}

QVariantList InstalledVersions(const Model& model) {
  QVariantList versions;
  for (const auto& module : model.catalogue->module_vars()) {
    for (const auto& group : module) {
      for (const VarInfo* var : group) {
        if (var->var_type != "SWVER_YMD") continue;
        const QString value = model.values.IsRead(*var) ? QString::fromStdString(model.values.Show(*var).text)
                                                        : QStringLiteral("not read");
        versions.append(QVariantMap{{QStringLiteral("label"), QString::fromStdString(var->var_name)},
                                    {QStringLiteral("value"), value}});
      }
    }
  }
  return versions;
}

QVariantList DownloadableLogs(const ConfigParser& catalogue) {
  QVariantList names;
  for (const VarInfo* var : catalogue.standalone_vars()) {
    if (!var->get_cmd.empty() && EndsInLog(var->var_name) && !IsOperationLog(var->var_name)) {
      names.append(QString::fromStdString(var->var_name));
    }
  }
  return names;
}

VarInfo* VariableAt(const ConfigParser& catalogue, int page, int group, int index) {
  if (page < 0 || group < 0 || index < 0) return nullptr;
  const auto& modules = catalogue.module_vars();
  const auto m = static_cast<std::size_t>(page);
  const auto g = static_cast<std::size_t>(group);
  const auto i = static_cast<std::size_t>(index);
  if (m >= modules.size() || g >= modules[m].size() || i >= modules[m][g].size()) return nullptr;
  return modules[m][g][i];
}

}  // namespace varkel
